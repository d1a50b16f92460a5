#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/DeviceSession.h"

namespace corvane {

/// Whether a text holds the prompt of a boot loader, "M51>", "AVR>" or "ARM>".
bool holdsPrompt(std::string_view text);

/// Bytes that a device says of itself, at least; fewer odd ones are answers that were damaged on the way.
inline constexpr int kShortestText = 4;

/// Text replies, and waiting for silence.
class LineReader {
public:
    explicit LineReader(DeviceSession& session) : session_(session) {}

    /// Reads and drops whatever arrives until the port has been silent for 0.5 s.
    void wait_comm_empty();

    /// Collects a text reply into the session's receivedLine. Returns the byte that ended it: 13 for a non-empty line
    /// (what follows strEcho in it, when strEcho is not empty and occurs), 6 or 21 at once for ACK or NAK; 0 when
    /// dTimeout seconds pass in silence.
    std::uint8_t wait_comm(double dTimeout, const std::string& strEcho = {});

    /// Answers that nobody waited for, and whether a boot loader's prompt, perhaps with a byte changed, was among what
    /// came in.
    struct Strays {
        int accepted = 0;
        int refused = 0;
        int damaged = 0;  ///< odd bytes, so few that they are no text: answers that were damaged on the way
        bool prompt = false;

        int answers() const { return accepted + refused + damaged; }
    };

    /// What stood behind the end of the last reply, in what was read with it.
    Strays along() const { return straysIn(rest_); }

    /// How many seconds ago its last byte came in. A prompt does not end a reply: silence does.
    double silence() const;

    /// Whether the last reply, or what was read with it, holds a prompt, or one with a byte changed.
    bool isPromptSeen() const;

    /// Takes what has come in.
    Strays waiting();

    /// Takes what comes in until the port has been silent for so many ms; at most that and 5 s.
    Strays settle(std::int32_t silence);

private:
    static Strays straysIn(const Bytes& bytes);
    std::uint8_t take(std::uint8_t byte, const std::string& echo);

    DeviceSession& session_;
    Bytes rest_;
    double heardAt_ = 0;  // s of the day: when the last reply's last byte came, or the wait for one began
};

}  // namespace corvane
