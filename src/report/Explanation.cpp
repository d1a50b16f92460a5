#include "report/Explanation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "report/Dialogue.h"
#include "report/Findings.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kMostMishaps = 40;

/// The HID library's events from here on are readers that come and go; those of a serial control are errors from 1001
/// on.
constexpr long kDeviceEvents = 8, kSerialErrors = 1001;

std::string milliseconds(std::int64_t micros) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(micros) / 1000);
    return text;
}

std::string moment(std::int64_t micros) {
    char text[32];
    std::snprintf(text, sizeof text, "%10.6f", static_cast<double>(micros) / 1e6);
    return text;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> all;
    Lines lines(text);
    for (std::string_view line; lines.next(line);) {
        if (!line.empty()) all.push_back(onOneLine(std::string(line)));
    }
    return all;
}

/// A text of a device or a site as it can be shown.
std::string shown(const std::string& text) { return onOneLine(toUtf8(text)); }

/// How the run went from phase to phase.
std::vector<std::string> phasesOf(const RunReport& report) {
    std::vector<std::string> lines;
    const RecordedEvent* latest = nullptr;
    for (const auto& event : report.events) {
        if (event.what != "phase") continue;
        if (latest) lines.push_back(shown(latest->bytes) + ": " + milliseconds(event.at - latest->at));
        latest = &event;
    }
    if (latest && latest->bytes != "idle") lines.push_back(shown(latest->bytes) + ": the recording ends in it");
    return lines;
}

/// What does not belong to a run in which all goes well, in order.
std::vector<std::string> mishapsOf(const RunReport& report, const std::vector<Exchange>& dialogue) {
    std::multimap<std::int64_t, std::string> found;
    for (const auto& event : report.events) {
        const auto& what = event.what;
        const auto code = what == "event" ? std::strtol(event.bytes.c_str(), nullptr, 10) : kDeviceEvents;
        const bool isBadEvent = code < kDeviceEvents || code >= kSerialErrors;
        if (what == "error" || what == "lost" || what == "refused" || isBadEvent)
            found.emplace(event.at, event.where + ": " + what + (event.bytes.empty() ? "" : " ") + shown(event.bytes));
        if (what == "advice") found.emplace(event.at, shown(event.bytes));
        if (what == "forgotten") found.emplace(0, "the beginning is missing, " + event.bytes + " bytes of it");
        if (what == "fetched" && event.bytes.find(' ') != std::string::npos)
            found.emplace(event.at, "the site: " + shown(event.bytes));
    }
    for (const auto& exchange : dialogue) {
        const bool isDeviceWork = exchange.kind == Exchange::Kind::record || exchange.kind == Exchange::Kind::request;
        const bool isOdd = exchange.kind == Exchange::Kind::record
                               ? exchange.answer != "\x06"
                               : isDeviceWork && !describedAnswer(exchange.answer).starts_with("reply: accepted");
        if (isOdd || exchange.isRepeated)
            found.emplace(exchange.at, describedRequest(exchange) + ": " + describedAnswer(exchange.answer));
    }
    std::vector<std::string> lines;
    for (const auto& [at, words] : found) {
        if (lines.size() == kMostMishaps) {
            lines.push_back("and " + std::to_string(found.size() - kMostMishaps) + " more; --bytes shows them all");
            break;
        }
        lines.push_back(moment(at) + "  " + words);
    }
    return lines;
}

std::vector<std::int64_t> roundTripsOf(const std::vector<Exchange>& dialogue) {
    std::vector<std::int64_t> all;
    for (const auto& exchange : dialogue) {
        if (exchange.kind == Exchange::Kind::record && exchange.isAcknowledged()) all.push_back(exchange.roundTrip());
    }
    std::sort(all.begin(), all.end());
    return all;
}

/// How long the records took, as a histogram of eight steps.
std::vector<std::string> histogramOf(const std::vector<Exchange>& dialogue) {
    constexpr std::size_t kSteps = 8, kWidest = 40;
    const auto times = roundTripsOf(dialogue);
    std::size_t sent = 0, repeated = 0;
    for (const auto& exchange : dialogue) {
        sent += exchange.kind == Exchange::Kind::record;
        repeated += exchange.isRepeated;
    }
    if (!sent) return {};
    std::vector<std::string> lines = {std::to_string(sent) + " sent, " + std::to_string(times.size()) +
                                      " acknowledged, " + std::to_string(repeated) + " sent again"};
    if (times.empty()) return lines;
    lines.push_back("from sending to ACK: " + milliseconds(times.front()) + " at least, " +
                    milliseconds(times[times.size() / 2]) + " half of them, " + milliseconds(times.back()) +
                    " at most");
    const auto step = (times.back() - times.front()) / static_cast<std::int64_t>(kSteps) + 1;
    std::array<std::size_t, kSteps> counts{};
    for (const auto time : times) ++counts[static_cast<std::size_t>((time - times.front()) / step)];
    for (std::size_t i = 0; i < kSteps; ++i) {
        if (!counts[i]) continue;
        lines.push_back("up to " + milliseconds(times.front() + static_cast<std::int64_t>(i + 1) * step) + "  " +
                        std::string(1 + counts[i] * (kWidest - 1) / times.size(), '#') + " " +
                        std::to_string(counts[i]));
    }
    return lines;
}

std::vector<std::string> questionsOf(const RunReport& report) {
    std::vector<std::string> lines;
    for (const auto& event : report.events) {
        if (event.what == "asked") lines.push_back(shown(event.bytes));
        if (event.what == "answered") lines.push_back("  answered: " + shown(event.bytes));
    }
    return lines;
}

struct Section {
    const char* title;
    const char* key;
    std::vector<std::string> lines;
};

std::vector<Section> sectionsOf(const RunReport& report) {
    const auto dialogue = dialogueOf(report.events, portOf(report.events));
    return {{"How it ended", "verdict", linesOf(report.verdict)},
            {"Why", "causes", findingsOf(report)},
            {"About", "about", linesOf(report.about)},
            {"Where the time went", "phases", phasesOf(report)},
            {"What was asked", "questions", questionsOf(report)},
            {"Records", "records", histogramOf(dialogue)},
            {"What was out of the ordinary", "mishaps", mishapsOf(report, dialogue)},
            {"The log", "log", linesOf(toUtf8(logOf(report.events)))}};
}

}  // namespace

std::vector<std::string> accountOf(const RunReport& report) {
    std::vector<std::string> lines;
    for (const auto& section : sectionsOf(report)) {
        if (section.lines.empty()) continue;
        if (!lines.empty()) lines.emplace_back();
        lines.emplace_back(section.title);
        for (const auto& line : section.lines) lines.push_back("  " + line);
    }
    return lines;
}

std::vector<std::string> bytesOf(const RunReport& report) {
    std::vector<std::string> lines;
    for (const auto& exchange : dialogueOf(report.events, portOf(report.events))) {
        lines.push_back(moment(exchange.at) + " > " + escapedBytes(exchange.sent) + "   " + describedRequest(exchange));
        lines.push_back(moment(exchange.firstAt ? exchange.firstAt : exchange.at) + " < " +
                        escapedBytes(exchange.answer) + "   " + describedAnswer(exchange.answer));
    }
    return lines;
}

std::vector<std::string> timingOf(const RunReport& report) {
    const auto dialogue = dialogueOf(report.events, portOf(report.events));
    const auto times = roundTripsOf(dialogue);
    if (times.empty()) return {"No record was acknowledged."};
    const auto usual = times[times.size() / 2];
    std::vector<std::string> lines = histogramOf(dialogue);
    std::size_t number = 0;
    for (const auto& exchange : dialogue) {
        if (exchange.kind != Exchange::Kind::record) continue;
        ++number;
        const auto trip = exchange.roundTrip(), wire = exchange.wireTime();
        lines.push_back(std::to_string(number) + "  " + describedRequest(exchange) + ": " +
                        (trip ? milliseconds(trip) : "no answer") +
                        (wire ? ", of which the line " + milliseconds(wire) : "") + (trip > 3 * usual ? "  slow" : ""));
    }
    return lines;
}

std::string jsonOf(const RunReport& report) {
    std::string json;
    for (const auto& section : sectionsOf(report)) {
        std::vector<std::string> strings;
        for (const auto& line : section.lines) strings.push_back(jsonString(line));
        json += (json.empty() ? "" : ",") + jsonString(section.key) + ":[" + joined(strings, ",") + "]";
    }
    return "{" + json + "}\n";
}

}  // namespace corvane
