// What somebody sends as the report of a run.

#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "models/Replay.h"
#include "report/Explanation.h"

namespace corvane::fuzz {

/// A file that is read and told in all ways: no line of it holds a control character.
void report(std::string_view bytes) {
    std::string why;
    const auto read = RunReport::read(std::string(bytes), why);
    require(read || !why.empty(), "a refusal says why");
    if (!read) return;
    for (const auto& lines : {accountOf(*read), bytesOf(*read), timingOf(*read), {jsonOf(*read).substr(1)}}) {
        for (const auto& line : lines) require(line.find('\x1B') == line.npos, "an account commands no terminal");
    }
}

/// A recording is written as it was read, and a replay of it ends whatever it is sent.
void recording(std::string_view bytes) {
    std::string why;
    const auto events = parseRecording(bytes, why);
    if (!events) return require(!why.empty(), "a refusal says why");
    Recording written;
    for (const auto& event : *events) written.add(event);
    require(parseRecording(written.text(), why) == events, "what was read is written the same");
    for (const auto timing : {models::Replay::Timing::fast, models::Replay::Timing::recorded}) {
        models::ReplayThen device(models::Replay(*events, portOf(*events), timing), models::DeviceOptions());
        models::Micros now = 0;
        for (const char c : bytes) {
            device.hear(++now, {static_cast<std::uint8_t>(c)}, 19200);
            device.speak(now);
        }
        require(device.replay().heard() + device.replay().missing() <= bytes.size(),
                "no more is expected than is there");
    }
}

}  // namespace corvane::fuzz
