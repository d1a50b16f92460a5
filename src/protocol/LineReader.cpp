#include "protocol/LineReader.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr std::uint8_t kStx = 0x02, kAck = 0x06, kCr = 0x0D, kNak = 0x15;
constexpr std::int32_t kSilence = 500;  // ms that count as an empty line
constexpr std::string_view kPrompts[] = {"M51>", "AVR>", "ARM>"};

/// Whether a text holds a prompt, or what is left of one when a byte of it arrived changed: between records nothing
/// else looks like that, and who says it has missed a record.
bool mayHoldPrompt(std::string_view text) {
    for (const auto prompt : kPrompts) {
        for (std::size_t at = 0; at + prompt.size() <= text.size(); ++at) {
            int others = 0;
            for (std::size_t i = 0; i < prompt.size(); ++i) others += text[at + i] != prompt[i];
            if (others < 2) return true;
        }
    }
    return false;
}

}  // namespace

bool holdsPrompt(std::string_view text) {
    return std::any_of(std::begin(kPrompts), std::end(kPrompts),
                       [text](std::string_view prompt) { return text.find(prompt) != std::string_view::npos; });
}

void LineReader::wait_comm_empty() {
    clsTimeout silence(session_.runtime);
    clsTimeout whole(session_.runtime);
    silence.Timeout(kSilence);
    whole.Timeout(kLongestDrain);
    while (!silence.IsTimeout() && !whole.IsTimeout() && !session_.cancel.isRequested()) {
        if (!session_.comm->PortOpen()) return;
        session_.awaitInput();
        if (session_.comm->InBufferCount() < 1) continue;
        session_.takeInput();
        silence.Reset();
    }
}

std::uint8_t LineReader::wait_comm(double dTimeout, const std::string& strEcho) {
    session_.receivedLine.clear();
    rest_.clear();
    int taken = 0;
    heardAt_ = session_.runtime.secondsOfDay();
    while (taken < kLongestLine && !session_.cancel.isRequested()) {
        if (silence() >= dTimeout) return 0;
        session_.awaitInput();
        if (session_.comm->InBufferCount() < 1) {
            if (!session_.comm->PortOpen()) return 0;
            continue;
        }
        const auto bytes = session_.takeInput();
        heardAt_ = session_.runtime.secondsOfDay();
        for (std::size_t i = 0; i < bytes.size(); ++i, ++taken) {
            const auto end = take(bytes[i], strEcho);
            if (!end) continue;
            rest_.assign(bytes.begin() + static_cast<std::ptrdiff_t>(i) + 1, bytes.end());
            return end;
        }
    }
    return 0;
}

double LineReader::silence() const {
    constexpr double kDay = 86400;
    const double passed = session_.runtime.secondsOfDay() - heardAt_;
    return passed < 0 ? passed + kDay : passed;
}

bool LineReader::isPromptSeen() const { return mayHoldPrompt(session_.receivedLine) || along().prompt; }

LineReader::Strays LineReader::straysIn(const Bytes& bytes) {
    Strays strays;
    strays.accepted = static_cast<int>(std::count(bytes.begin(), bytes.end(), kAck));
    strays.refused = static_cast<int>(std::count(bytes.begin(), bytes.end(), kNak));
    strays.prompt = mayHoldPrompt(textOf(bytes));
    return strays;
}

LineReader::Strays LineReader::waiting() {
    if (session_.comm->InBufferCount() < 1) return {};
    return straysIn(bytesOf(session_.comm->CommInput()));
}

LineReader::Strays LineReader::settle(std::int32_t silence) {
    constexpr std::int32_t kLongest = 5000;
    clsTimeout quiet(session_.runtime);
    clsTimeout whole(session_.runtime);
    quiet.Timeout(silence);
    whole.Timeout(silence + kLongest);
    Bytes seen = bytesOf(session_.receivedLine);  // a prompt may have begun there
    const auto before = seen.size();
    session_.receivedLine.clear();
    while (!quiet.IsTimeout() && !whole.IsTimeout() && session_.comm->PortOpen()) {
        session_.awaitInput();
        if (session_.comm->InBufferCount() < 1) continue;
        const auto more = bytesOf(session_.comm->CommInput());
        seen.insert(seen.end(), more.begin(), more.end());
        quiet.Reset();
    }
    auto strays = straysIn(seen);
    const auto other = static_cast<int>(seen.size() - before) - strays.accepted - strays.refused;
    strays.damaged = other < kShortestText ? other : 0;
    return strays;
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
