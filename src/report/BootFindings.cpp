#include "report/BootFindings.h"

#include <algorithm>
#include <cstdio>

namespace corvane {
namespace {

using Kind = Exchange::Kind;
using Dialogue = std::vector<Exchange>;

constexpr std::int64_t kSlowErase = 5000000, kLateAnswer = 250000;  // microseconds
constexpr char kAck = 0x06, kNak = 0x15;

std::string seconds(std::int64_t micros) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", static_cast<double>(micros) / 1e6);
    return text;
}

std::string faultOfErase(const Exchange& erase) {
    if (erase.isRefused()) return "The boot loader refused to erase.";
    if (erase.answer.empty()) return "The erase was not answered, so the device may be empty or not.";
    if (!erase.isAcknowledged()) return "The erase was answered by what is no answer: " + shortened(erase.answer) + ".";
    return erase.lastAt - erase.at > kSlowErase ? "The erase took " + seconds(erase.lastAt - erase.at) + "." : "";
}

/// Half of the acknowledged records took less than this.
std::int64_t usualTime(const Dialogue& dialogue) {
    std::vector<std::int64_t> times;
    for (const auto& exchange : dialogue) {
        if (exchange.kind == Kind::record && exchange.isAcknowledged()) times.push_back(exchange.roundTrip());
    }
    std::sort(times.begin(), times.end());
    return times.empty() ? 0 : times[times.size() / 2];
}

/// The same words for each of its sendings.
std::string describedRecord(Exchange record) {
    record.isRepeated = false;
    return describedRequest(record);
}

struct Fault {
    const char* kind = "";
    std::string words{};  // behind the record's name
};

Fault faultOfRecord(const Exchange& record, std::int64_t usual) {
    const auto& answer = record.answer;
    const auto acks = std::count(answer.begin(), answer.end(), kAck);
    const auto naks = std::count(answer.begin(), answer.end(), kNak);
    if (hasPrompt(answer))
        return {
            "restarts",
            "was answered by the boot loader's prompt: it has restarted, for lack of power or by its watchdog, and has "
            "forgotten where it was"};
    if (naks > 0) return {"refusals", "was refused: it arrived damaged, or the device cannot store it"};
    if (answer.empty()) return {"silences", "was not answered: it was lost, or its answer was"};
    if (acks + naks < static_cast<std::ptrdiff_t>(answer.size()))
        return {"noise", "was answered by what is no answer: " + shortened(answer)};
    if (acks > 1)
        return {"doubles", "was answered " + std::to_string(acks) +
                               " times: an answer is doubled, or one of an earlier record came late"};
    if (record.roundTrip() > std::max(kLateAnswer, 4 * usual))
        return {"late answers",
                "was answered late, after " + seconds(record.roundTrip()) + "; " + seconds(usual) + " is usual here"};
    return {};
}

void findInRestart(const Dialogue& dialogue, FindingList& list) {
    int restarts = 0;
    bool isPrompting = false, wasAsked = false, hasAnswered = false;
    std::int64_t at = 0;
    for (const auto& exchange : dialogue) {
        if (isCommand(exchange, 'X')) restarts = 0;
        if (isCommand(exchange, 'R')) {
            at = exchange.at;
            ++restarts;
            isPrompting = false;
            if (exchange.isRefused())
                list.add(at, "restart", "The boot loader refused the restart: it arrived damaged.");
        } else if (restarts > 0) {
            isPrompting = isPrompting || hasPrompt(exchange.answer);
            wasAsked = wasAsked || exchange.kind == Kind::request;
            hasAnswered = hasAnswered || (exchange.kind == Kind::request && exchange.isAcknowledged());
        }
    }
    if (restarts > 0 && isPrompting && !hasAnswered)
        list.add(at, "restart",
                 "Told to restart, the device stayed in its boot loader (" + std::to_string(restarts) + " times).");
    if (restarts > 0 && !isPrompting && wasAsked && !hasAnswered)
        list.add(at, "restart", "After the restart nothing was heard of the device.");
}

}  // namespace

void FindingList::add(std::int64_t at, const std::string& kind, const std::string& words) {
    const auto same =
        std::find_if(found_.begin(), found_.end(), [&](const auto& one) { return one.second.words == words; });
    if (same != found_.end()) {
        ++same->second.times;
    } else {
        found_.insert({at, {kind, words, 1}});
    }
}

std::vector<std::string> FindingList::lines() const {
    constexpr std::size_t kMostOfAKind = 5;
    std::map<std::string, std::size_t> told;
    std::vector<std::string> lines;
    for (const auto& [at, finding] : found_) {
        const auto times = finding.times > 1 ? " (" + std::to_string(finding.times) + " times)" : "";
        if (++told[finding.kind] <= kMostOfAKind) lines.push_back(finding.words + times);
    }
    for (const auto& [kind, count] : told) {
        if (count > kMostOfAKind)
            lines.push_back("And " + std::to_string(count - kMostOfAKind) + " more of this kind: " + kind + ".");
    }
    return lines;
}

std::string shortened(const std::string& bytes) {
    constexpr std::size_t kMost = 16;
    return escapedBytes(bytes.substr(0, kMost)) + (bytes.size() > kMost ? "..." : "");
}

bool hasPrompt(const std::string& answer) {
    constexpr std::size_t kLongest = 8;
    const auto end = answer.rfind('>');
    const auto start = end == std::string::npos ? end : answer.rfind('\n', end);
    return start != std::string::npos && end - start > 1 && end - start < kLongest;
}

bool isCommand(const Exchange& exchange, char command) {
    return exchange.kind == Kind::command && exchange.sent.size() > 1 && exchange.sent[1] == command;
}

void findInBootLoader(const Dialogue& dialogue, FindingList& list) {
    const auto usual = usualTime(dialogue);
    std::size_t number = 0;
    bool isInBootLoader = false;
    for (const auto& exchange : dialogue) {
        isInBootLoader = isInBootLoader || hasPrompt(exchange.answer);
        if (isCommand(exchange, 'X') && isInBootLoader) {
            number = 0;
            const auto words = faultOfErase(exchange);
            if (!words.empty()) list.add(exchange.at, "erase", words);
        }
        if (exchange.kind != Kind::record) continue;
        number += !exchange.isRepeated;
        const auto fault = faultOfRecord(exchange, usual);
        if (!fault.words.empty())
            list.add(exchange.at, fault.kind,
                     "Record " + std::to_string(number) + " (" + describedRecord(exchange) + ") " + fault.words + ".");
    }
    findInRestart(dialogue, list);
}

}  // namespace corvane
