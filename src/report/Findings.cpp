#include "report/Findings.h"

#include "protocol/Frame.h"
#include "report/BootFindings.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Kind = Exchange::Kind;
using Dialogue = std::vector<Exchange>;

constexpr char kUnanswered[] = "was not answered";
constexpr char kVersion = 0x01, kLogin = 0x00, kSwitch = 0x1F;

std::string shown(const std::string& text) { return onOneLine(toUtf8(text)); }

bool isFunction(const Exchange& exchange, char function) {
    return exchange.kind == Kind::request && exchange.sent.size() > 2 && exchange.sent[2] == function;
}

/// What is wrong with an answer that should be a frame which accepts; empty when it is one.
std::string faultOfReply(const std::string& answer) {
    ReplyFrame reply;
    if (answer.empty()) return kUnanswered;
    if (!reply.take(bytesOf(answer)))
        return reply.isBegun() ? "was answered by a reply that is cut short"
                               : "was answered by what is no reply: noise";
    if (!reply.isCrcRight()) return "was answered by a reply that arrived damaged";
    return reply.isAccepted() ? "" : "was refused (" + describedAnswer(answer) + ")";
}

/// Behind which record something happened; empty when none had been sent.
std::string placeAmongRecords(const Dialogue& dialogue, std::int64_t at) {
    const Exchange* last = nullptr;
    std::size_t sent = 0;
    for (const auto& exchange : dialogue) {
        if (exchange.kind != Kind::record || exchange.at > at) continue;
        last = &exchange;
        ++sent;
    }
    return last ? ", after " + std::to_string(sent) + " records had been sent, the last one " + describedRequest(*last)
                : "";
}

/// What the port, the site and the operator did.
void findInEvents(const std::vector<RecordedEvent>& events, const Dialogue& dialogue, FindingList& list) {
    std::string phase, question;
    for (const auto& event : events) {
        const auto& what = event.what;
        const auto words = shown(event.bytes);
        if (what == "phase") phase = words;
        if (what == "asked") question = shown(event.bytes.substr(0, event.bytes.find('\r')));
        if (what == "answered" && (words == "Cancel" || words == "nothing"))
            list.add(event.at, "declined", "The operator said no to: \"" + question + "\"");
        if (what == "refused") list.add(event.at, "port", event.where + " could not be opened: " + words + ".");
        if (event.isLoss())
            list.add(event.at, "loss",
                     event.where + " vanished in the phase \"" + phase + "\"" + placeAmongRecords(dialogue, event.at) +
                         ": the device, its adapter or the cable was unplugged or lost its power.");
        if (what == "error") list.add(event.at, "port", event.where + " failed: " + words + ".");
        if (what == "fetched" && words.find(' ') != std::string::npos)
            list.add(event.at, "site", "The site: " + words.substr(words.find(' ') + 1));
        if (what == "event" && (words.starts_with("1004") || words.starts_with("1009")))
            list.add(event.at, "line error",
                     event.where + " reported a line error: noise, or another rate than the device's.");
        if (what == "event" && words.starts_with("1008"))
            list.add(event.at, "overflow", event.where + " brought more than was taken from it in time.");
    }
}

/// What went wrong while the application was asked, before the first record. The many questions of a scan count as one.
void findInApplication(const Dialogue& dialogue, const std::string& port, FindingList& list) {
    std::size_t asked = 0, answered = 0, unreadable = 0;
    bool wasPrompting = false;
    std::int64_t switchedAt = -1;
    std::string switchFault;  // of the last one: the first may only lead to the question for a password
    for (const auto& exchange : dialogue) {
        if (exchange.kind == Kind::record) break;
        wasPrompting = wasPrompting || hasPrompt(exchange.answer);
        const auto fault = faultOfReply(exchange.answer);
        const auto tell = [&](const char* subject) {
            if (!fault.empty()) list.add(exchange.at, subject, std::string(subject) + " " + fault + ".");
        };
        if (isFunction(exchange, kVersion)) {
            ++asked;
            answered += fault.empty();
            unreadable += !fault.empty() && !exchange.answer.empty();
        }
        if (exchange.kind == Kind::secret) tell("The device's password");
        if (isFunction(exchange, kLogin)) tell("Whether the device wants a login");
        if (isFunction(exchange, kSwitch)) {
            switchedAt = exchange.at;
            switchFault = fault;
        }
        if (isCommand(exchange, 'F')) answered += exchange.answer.starts_with("A");
        if (isCommand(exchange, 'X') && !wasPrompting) {
            switchedAt = exchange.at;
            switchFault = exchange.answer.starts_with("A") ? ""
                          : exchange.answer.empty()        ? kUnanswered
                                                           : "was answered by: " + shortened(exchange.answer);
        }
    }
    if (switchedAt >= 0 && !switchFault.empty())
        list.add(switchedAt, "switch", "The switch into the boot loader " + switchFault + ".");
    const bool mayHaveSwitched = switchFault.empty() || switchFault == kUnanswered;
    if (switchedAt >= 0 && mayHaveSwitched && !wasPrompting)
        list.add(switchedAt, "prompt", "After the switch the boot loader's prompt never came.");
    if (unreadable > 0)
        list.add(0, "noise",
                 std::to_string(unreadable) + " of " + std::to_string(asked) + " questions for the version at " + port +
                     " brought something that is no good reply: noise, another rate or another kind of device.");
    if (asked > 0 && answered + unreadable == 0 && !wasPrompting)
        list.add(0, "silence", "Nothing has answered any question for the version.");
}

}  // namespace

std::vector<std::string> findingsOf(const RunReport& report) {
    const auto port = portOf(report.events);
    const auto dialogue = dialogueOf(report.events, port);
    FindingList list;
    findInEvents(report.events, dialogue, list);
    findInApplication(dialogue, port, list);
    findInBootLoader(dialogue, list);
    return list.lines();
}

}  // namespace corvane
