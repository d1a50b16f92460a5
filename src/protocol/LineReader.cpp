#include "protocol/LineReader.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr std::uint8_t kStx = 0x02, kAck = 0x06, kCr = 0x0D, kNak = 0x15;
constexpr std::int32_t kSilence = 500;  // ms that count as an empty line

}  // namespace

void LineReader::wait_comm_empty() {
    clsTimeout silence(session_.runtime);
    clsTimeout whole(session_.runtime);
    silence.Timeout(kSilence);
    whole.Timeout(kLongestDrain);
    while (!silence.IsTimeout() && !whole.IsTimeout() && !session_.cancel.isRequested()) {
        if (!session_.comm->PortOpen()) return;
        session_.runtime.WaitActivity(1);
        session_.runtime.DoEvents();
        if (session_.comm->InBufferCount() < 1) continue;
        session_.comm->CommInput();
        silence.Reset();
    }
}

std::uint8_t LineReader::wait_comm(double dTimeout, const std::string& strEcho) {
    constexpr double kDay = 86400;
    session_.receivedLine.clear();
    rest_.clear();
    int taken = 0;
    double noted = session_.runtime.secondsOfDay();
    while (taken < kLongestLine && !session_.cancel.isRequested()) {
        const double passed = session_.runtime.secondsOfDay() - noted;
        if ((passed < 0 ? passed + kDay : passed) >= dTimeout) return 0;
        session_.runtime.WaitActivity(1);
        session_.runtime.DoEvents();
        if (session_.comm->InBufferCount() < 1) {
            if (!session_.comm->PortOpen()) return 0;
            continue;
        }
        const auto bytes = bytesOf(session_.comm->CommInput());
        for (std::size_t i = 0; i < bytes.size(); ++i, ++taken) {
            const auto end = take(bytes[i], strEcho);
            if (!end) continue;
            rest_.assign(bytes.begin() + static_cast<std::ptrdiff_t>(i) + 1, bytes.end());
            return end;
        }
        noted = session_.runtime.secondsOfDay();
    }
    return 0;
}

bool LineReader::cameAlong(std::uint8_t byte) const {
    return std::find(rest_.begin(), rest_.end(), byte) != rest_.end();
}

/// The byte itself when it ends the reply, else 0.
std::uint8_t LineReader::take(std::uint8_t byte, const std::string& echo) {
    auto& line = session_.receivedLine;
    if (byte == kAck || byte == kNak) return byte;
    if (byte == kStx) {
        line.clear();
    } else if (byte == kCr) {
        const auto at = echo.empty() ? std::string::npos : line.find(echo);
        if (at != std::string::npos) line.erase(0, at + echo.size());
        if (!line.empty()) return kCr;
    } else {
        line += static_cast<char>(byte);
    }
    return 0;
}

}  // namespace corvane
