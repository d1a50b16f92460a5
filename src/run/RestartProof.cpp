#include "run/RestartProof.h"

#include <algorithm>
#include <utility>

namespace corvane {

RestartProof::Found RestartProof::find(const DeviceScanner::Way& way, std::string& version) {
    constexpr std::int32_t kLongest = 8000, kLastQuestion = 1000;  // ms
    constexpr int kRestarts = 2;
    const auto port = session_.comm->CommPort();
    const auto bootSettings = session_.comm->Settings();
    auto& strays = session_.strays = {};
    clsTimeout whole(session_.runtime);
    whole.Timeout(kLongest);
    int restarts = 0;
    bool isInStep = true;
    const auto restartAgain = [&] {
        // It was not heard, and what came instead of it may be the answer to a record, damaged perhaps.
        isInStep = isInStep && (strays.bytes == 0 || strays.bytes >= kShortestText);
        ++restarts;
        isp_.restartAgain();
        session_.runtime.Sleep(300);
        // One that acknowledges a restart would have done so the first time: this is a record's answer.
        isInStep = isInStep && LineReader(session_).waiting().accepted == 0;
        strays.bytes = 0;
    };
    const auto first = LineReader(session_).waiting();
    strays.bytes = first.accepted;  // a boot loader may acknowledge it
    // Who refuses the restart did not understand it, and still writes whatever record comes late.
    if (first.refused > 0) restartAgain();
    // Its start may swallow part of the first question. A device forgets that part within half a second; then it is
    // asked once more before the prompt is looked for, whose CRs would only spoil another frame.
    const bool isKnown = !way.protocolName.empty();  // else each question is one at every setting
    bool isFirst = true;
    for (std::int32_t time = isKnown ? 550 : 300; !whole.IsTimeout(); time = std::min(2 * time, kLastQuestion)) {
        if (!isReachable(port, bootSettings)) continue;
        const bool runs = scanner_.askVersion(way, time, version);
        if (runs) return isInStep && !strays.hasAck ? Found::runs : Found::outOfStep;
        if (isKnown && std::exchange(isFirst, false)) continue;
        if (!isReachable(port, bootSettings) || !scanner_.setSettings(bootSettings) || !isp_.isPrompting()) continue;
        if (restarts == kRestarts) return Found::waits;
        restartAgain();
    }
    return Found::silent;
}

/// A device with a USB port of its own leaves the bus when it restarts; then its port is opened once more.
bool RestartProof::isReachable(const std::string& port, const std::string& settings) {
    if (session_.comm->PortOpen() || scanner_.openAgain(port, settings)) return true;
    session_.runtime.Sleep(250);
    return false;
}

}  // namespace corvane
