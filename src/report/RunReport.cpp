#include "report/RunReport.h"

#include <map>

namespace corvane {

std::optional<RunReport> RunReport::read(const std::string& bytes, std::string& why) {
    RunReport report;
    std::string recording = bytes;
    if (bytes.starts_with("PK")) {
        const auto files = unpacked(bytes, why);
        if (!files) return std::nullopt;
        recording.clear();
        for (const auto& file : *files) {
            if (file.name == "recording.txt") recording = file.content;
            if (file.name == "about.txt") report.about = file.content;
            if (file.name == "verdict.txt") report.verdict = file.content;
        }
    }
    auto events = parseRecording(recording, why);
    if (!events) return std::nullopt;
    report.events = std::move(*events);
    return report;
}

std::string logOf(const std::vector<RecordedEvent>& events) {
    std::string log;
    for (const auto& event : events) {
        if (event.what == "log") log += event.bytes;
        if (event.what == "clear" && !log.empty() && !log.ends_with("\n")) log += "\r\n";
    }
    return log;
}

std::string portOf(const std::vector<RecordedEvent>& events) {
    constexpr std::size_t kAnswer = 1000;  // one byte of an answer tells more than any number of questions
    std::map<std::string, std::size_t> weights;
    std::string best;
    for (const auto& event : events) {
        if (event.what != "got" && event.what != "sent") continue;
        auto& weight = weights[event.where];
        weight += event.what == "got" ? kAnswer * event.bytes.size() : 1;
        if (best.empty() || weight > weights[best]) best = event.where;
    }
    return best;
}

}  // namespace corvane
