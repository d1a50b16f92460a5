#pragma once

#include "recording/Recording.h"

namespace corvane {

/// One thing that was sent to the device, and what came until the next.
struct Exchange {
    enum class Kind { request, record, carriageReturn, command, secret, nothing };

    Kind kind = Kind::nothing;
    std::int64_t at = 0;       ///< microseconds
    std::int64_t firstAt = 0;  ///< when an answer was seen first, 0 when none was
    std::int64_t lastAt = 0;
    std::uint32_t rate = 0;  ///< of the line, 0 when it is not known
    std::string sent;
    std::string answer;         ///< all that came
    std::uint32_t address = 0;  ///< of a record, with its upper part
    bool isRepeated = false;    ///< a record that was sent since the last erase

    bool isAcknowledged() const { return answer.find('\x06') != std::string::npos; }
    bool isRefused() const { return answer.find('\x15') != std::string::npos; }
    std::int64_t roundTrip() const { return firstAt ? firstAt - at : 0; }

    /// What the line itself needs for what was sent and the first byte that came, in microseconds; 0 when its rate is
    /// not known.
    std::int64_t wireTime() const;
};

/// The dialogue at a port, taken apart.
std::vector<Exchange> dialogueOf(const std::vector<RecordedEvent>& events, const std::string& port);

/// What was sent and what came, in words: "record at 00000400, 16 bytes", "ACK", "reply: refused (07)".
std::string describedRequest(const Exchange& exchange);
std::string describedAnswer(const std::string& bytes);

}  // namespace corvane
