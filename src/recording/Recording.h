#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// One thing that happened in a run, as docs/recordings.md tells it. What it is and where are words without blanks; the
/// rest is any bytes.
struct RecordedEvent {
    std::int64_t at = 0;  ///< microseconds since the run began
    std::string what;
    std::string where;  ///< "COM3", "HID1", "site"; "-" where it is nowhere
    std::string bytes{};

    bool operator==(const RecordedEvent&) const = default;

    /// Whether a serial port was found gone, or a reader was unplugged; or came back.
    bool isLoss() const { return what == "lost" || (what == "event" && bytes.starts_with("17 ")); }
    bool isReturn() const { return what == "open" || (what == "event" && bytes.starts_with("16 ")); }
};

/// What crossed the seams of a run, as lines of text. It is bounded: of a run that is longer than that the beginning is
/// forgotten, and the text says so.
class Recording {
public:
    static constexpr std::size_t kMost = 16U << 20;  ///< bytes of text

    explicit Recording(std::size_t most = kMost) : most_(most) {}

    void clear();

    /// The line that the event has become.
    std::string_view add(const RecordedEvent& event);

    /// All of it, the line that names the format first.
    std::string text() const;

private:
    std::size_t most_;
    std::deque<std::string> chunks_;  // whole lines, some 64 KiB each, so that little is moved when the oldest go
    std::size_t size_ = 0;
    std::size_t forgotten_ = 0;
};

/// The events of such a text. Nothing, with the reason as a part of a sentence, when a line of it is none.
[[nodiscard]] std::optional<std::vector<RecordedEvent>> parseRecording(std::string_view text, std::string& why);

/// Bytes as a recording writes them: printable ones but the backslash as they are, \x1F the others.
std::string escapedBytes(std::string_view bytes);

}  // namespace corvane
