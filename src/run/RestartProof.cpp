#include "run/RestartProof.h"

#include <algorithm>

namespace corvane {

RestartProof::Found RestartProof::find(const DeviceScanner::Way& way, std::string& version) {
    constexpr std::int32_t kLongest = 8000, kFirstQuestion = 300, kLastQuestion = 1000;  // ms
    constexpr int kRestarts = 2;
    const auto port = session_.comm->CommPort();
    const auto bootSettings = session_.comm->Settings();
    LineReader(session_).waiting();  // a boot loader may acknowledge the restart
    scanner_.takeStrayAck();
    bool isInStep = true;
    clsTimeout whole(session_.runtime);
    whole.Timeout(kLongest);
    int restarts = 0;
    for (auto time = kFirstQuestion; !whole.IsTimeout(); time = std::min(2 * time, kLastQuestion)) {
        if (!isReachable(port, bootSettings)) continue;
        const bool runs = scanner_.askVersion(way, time, version);
        isInStep = isInStep && !scanner_.takeStrayAck();
        if (runs) return isInStep ? Found::runs : Found::outOfStep;
        if (!isReachable(port, bootSettings) || !scanner_.setSettings(bootSettings) || !isp_.isPrompting()) continue;
        if (restarts++ == kRestarts) return Found::waits;
        isp_.restartAgain();
        session_.runtime.Sleep(300);
        LineReader(session_).waiting();
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
