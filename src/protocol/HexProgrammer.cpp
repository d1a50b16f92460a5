#include "protocol/HexProgrammer.h"

#include <algorithm>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::uint8_t kAck = 6, kNak = 21;
constexpr double kAnswerTime = 0.5;  // s
constexpr std::uint32_t kData = 0, kEnd = 1, kUpperAddress = 4, kOwnStart = 9;

/// A field of hexadecimal digits in a record's text, counted from 0. The device checks the rest of the record.
std::uint32_t field(std::string_view line, std::size_t at, std::size_t digits) {
    const auto value = at < line.size() ? hexNumber(line.substr(at, digits)) : std::nullopt;
    if (!value) throw RuntimeError::typeMismatch();
    return *value;
}

}  // namespace

bool HexProgrammer::ProgramHex(const std::string& code, bool bShowCode) {
    constexpr int kTries = 3;
    for (int i = 0; i < kTries; ++i) {
        if (bShowCode) session_.log.ShowInfo(code);
        if (i == 1) ++repeated_;
        session_.comm->CommOutput(code + "\r");
        const auto answer = awaitAnswer();
        const bool isAccepted = answer == Answer::accepted;
        if (bShowCode) session_.log.ShowInfo(isAccepted ? " < OK\r\n" : " < NG\r\n");
        if (isAccepted || answer == Answer::unclear) return isAccepted;
        if (answer == Answer::none) wasSilent_ = true;
    }
    return false;
}

/// What comes while the record is still being sent belongs to something before it: an ACK says nothing then, a NAK that
/// a record which counts as accepted was not.
HexProgrammer::Answer HexProgrammer::awaitAnswer() {
    constexpr int kMostStrays = 10;
    for (int i = 0; i < kMostStrays; ++i) {
        const auto answer = lines_.wait_comm(kAnswerTime);
        if (answer != kAck && answer != kNak) return Answer::none;
        const bool isWhollySent = session_.comm->OutBufferCount() == 0;
        if (answer == kNak && isWhollySent) return isAnotherAnswerComing() ? Answer::unclear : Answer::refused;
        if (answer == kNak || lines_.cameAlong(kNak)) return Answer::unclear;
        if (isWhollySent) return Answer::accepted;
    }
    return Answer::none;
}

bool HexProgrammer::isAnotherAnswerComing() {
    if (lines_.cameAlong(kAck) || lines_.cameAlong(kNak)) return true;
    const auto next = lines_.wait_comm(kAnswerTime);
    return next == kAck || next == kNak;
}

bool HexProgrammer::isRefusalLeft() {
    if (!session_.comm->PortOpen()) return false;
    const auto left = bytesOf(session_.comm->CommInput());
    return std::find(left.begin(), left.end(), kNak) != left.end();
}

bool HexProgrammer::ISP_Program(const std::string& HexFile) {
    const auto loaded = loadImage(HexFile, digest_);
    if (loaded.image) return ISP_Program(*loaded.image);
    session_.log.ShowInfo("Programming...");
    session_.log.ShowInfo(" < NG(" + RuntimeError::fileNotFound().description() + ")\r\n");
    progress_.progress(0, 0);
    return false;
}

bool HexProgrammer::ISP_Program(const Image& image) {
    session_.log.ShowInfo("Programming...");
    bool sent = false;
    std::string reason;
    try {
        sent = sendImage(image.bytes());
    } catch (const RuntimeError& error) {
        reason = "(" + error.description() + ")";
    }
    session_.log.ShowInfo(sent ? " < OK\r\n" : " < NG" + reason + "\r\n");
    progress_.progress(0, 0);
    return sent;
}

bool HexProgrammer::sendImage(std::string_view image) {
    const auto size = static_cast<std::int64_t>(image.size());
    wasSilent_ = isPlaced_ = false;
    progress_.progress(0, size);
    std::uint32_t upper = 0;
    std::int64_t consumed = 0;
    Held held;
    std::string_view line;
    for (Lines lines(image); lines.next(line);) {
        if (line.empty() || line.front() != ':') {
            session_.runtime.DoEvents();
            continue;
        }
        if (!takeRecord(std::string(line), upper, held)) return false;
        consumed = std::min(consumed + static_cast<std::int64_t>(line.size()) + 2, size);
        progress_.progress(consumed, size);
        session_.runtime.DoEvents();
        session_.runtime.DoEvents();
    }
    if (!sendHeld(held.first) || !sendHeld(held.end)) return false;
    deviceUpper_ = 0;
    return !wasSilent_ || lines_.wait_comm(kAnswerTime) != kNak;
}

/// Holds a record back or sends it.
bool HexProgrammer::takeRecord(const std::string& line, std::uint32_t& upper, Held& held) {
    field(line, 1, 2);
    const auto address = field(line, 3, 4);
    const auto type = field(line, 7, 2);
    if (upper == 0 && address == 0 && (type == kData || type == kOwnStart)) {
        held.first = line;
        return true;
    }
    if (type == kEnd) {
        held.end = line;
        return true;
    }
    if (type == kUpperAddress) {
        if (!sendHeld(held.first)) return false;
        upper = field(line, 9, 4);
        deviceUpper_ = upper;
    }
    return send(line, type);
}

/// After a try that failed beyond the first segment the device still adds the upper address of that place. An image
/// that does not begin with an address record of its own would then be written elsewhere.
bool HexProgrammer::send(const std::string& line, std::uint32_t type) {
    if (!isPlaced_ && type != kUpperAddress && deviceUpper_ != 0) {
        if (!ProgramHex(":020000040000FA", false)) return false;
        deviceUpper_ = 0;
    }
    isPlaced_ = true;
    return ProgramHex(line, false);
}

bool HexProgrammer::sendHeld(std::string& record) {
    if (record.empty()) return true;
    const bool sent = send(record, kData);
    if (sent) record.clear();
    return sent;
}

}  // namespace corvane
