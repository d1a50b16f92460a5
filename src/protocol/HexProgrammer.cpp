#include "protocol/HexProgrammer.h"

#include <algorithm>
#include <cmath>

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::uint8_t kAck = 6, kNak = 21;
constexpr std::int32_t kOwed = 1500;  // ms of silence; no answer to what was sent before comes later
constexpr int kMostDoubts = 16;       // that one try may mend
constexpr int kLateTries = 2;         // after which answers that come late are taken for a habit of the device
constexpr std::size_t kLargestPage = 4096;
const std::string kToFirstSegment = ":020000040000FA";

/// Where to begin again so that nothing of the page at hand is missing, had the device forgotten it.
std::size_t pageBefore(const SendPlan& plan, std::size_t at) {
    constexpr std::size_t kAroundData = 11;  // ":", length, address, type and checksum
    std::size_t bytes = 0;
    while (at > 0 && bytes < kLargestPage) {
        const auto characters = plan.steps[--at].record.size();
        bytes += characters > kAroundData ? (characters - kAroundData) / 2 : 0;
    }
    return at;
}

}  // namespace

void HexProgrammer::beginDevice(bool hasLine) {
    clock_.beginDevice(hasLine);
    looksAwake_ = !session_.mayLookAwake || session_.mayLookAwake();
    repeated_ = 0;
    place_ = "";
    isSettled_ = mustErase_ = hasStrays_ = isUneven_ = false;
    lateTries_ = 0;
    countsUnsent_ = true;
}

void HexProgrammer::erased(std::int32_t milliseconds) {
    eraseEcho_.Timeout(milliseconds + kOwed);
    mustErase_ = isSettled_ = false;
}

bool HexProgrammer::ProgramHex(const std::string& code, bool bShowCode) {
    constexpr int kTries = 3;
    for (int i = 0; i < kTries; ++i) {
        if (bShowCode) session_.log.ShowInfo(code);
        if (i == 1) ++repeated_;
        last_ = attempt(code);
        if (bShowCode) session_.log.ShowInfo(last_ == Found::taken ? " < OK\r\n" : " < NG\r\n");
        if (last_ == Found::taken) return true;
        if (last_ != Found::restarted) last_ = settle(last_);
        if (!mayRepeat()) return false;
    }
    return false;
}

/// Whether the last record's silence may hide that an answer before it was a second erase's.
bool HexProgrammer::mayBeBehindEcho() const {
    return last_ == Found::silent && isEchoPossible_ && isAnswered_ && !wasSettled_ && !isBeyond_;
}

/// Whether sending the last record again, with nothing owed, mends what came of it.
bool HexProgrammer::mayRepeat() const {
    if (mayBeBehindEcho()) return false;
    if (last_ == Found::refused) return true;
    if (last_ == Found::late) return (!isBeyond_ || lateTries_ >= kLateTries) && !isEchoPossible_;
    return last_ == Found::silent && !isBeyond_;
}

HexProgrammer::Found HexProgrammer::attempt(const std::string& code) {
    // What is there before the record is sent cannot be its answer.
    const auto before = lines_.waiting();
    if (before.prompt) return Found::restarted;
    if (before.answers() > 0 && !isSettled_) return Found::extra;
    isEchoPossible_ = !eraseEcho_.IsTimeout();
    // The clock first: this program may be kept waiting behind the other call for longer than an answer takes.
    clock_.sent(code.size() + 1);
    session_.comm->CommOutput(code + "\r");
    expectAnswer();
    showProgress();  // whatever that takes, this record is on the line meanwhile
    const auto answer = lines_.wait_comm(clock_.untilCrossed() + clock_.patience(isSettled_));
    wasSettled_ = isSettled_;
    if (lines_.isPromptSeen()) return isAskedFor() ? Found::prompted : Found::restarted;
    if (answer != kAck && answer != kNak) return Found::silent;
    isAnswered_ = true;
    clock_.answered();
    const auto found = isSettled_ ? judgeSettled(answer) : judge(answer);
    if (found == Found::taken) isSettled_ = false;
    return found;
}

/// Of the record before the one at hand, and lets events run twice for it.
void HexProgrammer::showProgress() {
    if (!progressed_) return;
    if (*progressed_ > shown_) progress_.progress(shown_ = *progressed_, size_);
    progressed_.reset();
    session_.runtime.DoEvents();
    session_.runtime.DoEvents();
}

void HexProgrammer::expectAnswer() {
    constexpr double kMicros = 1e6;
    const auto expected = clock_.untilAnswer() * kMicros;
    if (looksAwake_ && expected > 0) session_.runtime.expectNews(std::llround(expected));
}

/// A record that loses its ":" leaves a bare carriage return, which asks for the prompt. A prompt at any time but that
/// of an answer, or behind the first segment, is taken for a restart.
bool HexProgrammer::isAskedFor() const {
    return !isBeyond_ && clock_.arrival(lines_.silence()) == AnswerClock::Arrival::usual;
}

HexProgrammer::Found HexProgrammer::judge(std::uint8_t answer) {
    if (lines_.along().answers() > 0) return Found::extra;
    if (countsUnsent_ && session_.comm->OutBufferCount() > 0) return Found::extra;
    // A few odd bytes before it may be the answer, damaged; then this one is another record's.
    const auto said = static_cast<int>(session_.receivedLine.size());
    if (said > 0 && said < kShortestText) return Found::late;
    switch (clock_.arrival()) {
        case AnswerClock::Arrival::early:
            return Found::extra;
        case AnswerClock::Arrival::late:
            // A device that says something meanwhile has heard its record and is at work.
            if (said == 0) return Found::late;
            break;
        case AnswerClock::Arrival::usual:
            break;
    }
    if (answer == kNak) return Found::refused;
    clock_.taken(false);
    return Found::taken;
}

/// Whatever comes now is this record's: one acceptance is enough, however often it was heard.
HexProgrammer::Found HexProgrammer::judgeSettled(std::uint8_t answer) {
    const auto along = lines_.along();
    if (answer == kNak && along.accepted == 0) return Found::refused;
    // A device that is slow by nature answers late again.
    if (along.answers() > 0 || (last_ == Found::late && clock_.arrival() != AnswerClock::Arrival::late)) {
        hasStrays_ = true;
    }
    if (session_.comm->OutBufferCount() > 0) countsUnsent_ = false;
    clock_.taken(true);
    if (along.answers() == 0) return Found::taken;
    // Behind the first segment the other answer may be that of a record which was heard again, in the wrong place.
    if (isBeyond_) return Found::extra;
    lines_.settle(kOwed);
    return Found::taken;
}

/// Waits until nothing is owed any more; what comes meanwhile may change what to think of the last record.
HexProgrammer::Found HexProgrammer::settle(Found found) {
    const auto strays = lines_.settle(kOwed);
    isSettled_ = true;
    isUneven_ = isUneven_ || found != Found::taken;
    hasStrays_ = hasStrays_ || found == Found::extra || strays.answers() > (found == Found::silent ? 1 : 0);
    if (strays.prompt && found != Found::prompted) return Found::restarted;
    if (strays.answers() == 0) return found;
    isAnswered_ = true;
    return found == Found::silent && strays.answers() == 1 ? Found::late : Found::extra;
}

bool HexProgrammer::isQuiet() {
    if (!session_.comm->PortOpen()) return true;
    const auto left = lines_.waiting();
    hasStrays_ = hasStrays_ || left.answers() > 0;
    mustErase_ = left.prompt || (left.answers() > 0 && mayBeDisturbed());
    return !left.prompt && left.answers() == 0;
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
    showProgress();
    session_.log.ShowInfo(sent ? " < OK\r\n" : " < NG" + reason + "\r\n");
    progress_.progress(0, 0);
    return sent;
}

bool HexProgrammer::sendImage(std::string_view content) {
    const auto plan = SendPlan::of(content);
    const auto size = static_cast<std::int64_t>(content.size());
    isBegun_ = isBeyond_ = isAnswered_ = isSecond_ = mustErase_ = false;
    doubts_ = 0;
    clock_.settings(session_.comm->Settings());
    progress_.progress(0, size);
    size_ = size;
    shown_ = 0;
    std::size_t before = 0;  // the record that was sent before the one at hand
    const auto end = plan.steps.size();
    for (std::size_t at = 0;; ++at) {
        if (at + 1 >= end && hasStrays_ && !isSecond_) {
            if (!startOver()) return false;
            at = before = 0;
        }
        if (at >= end) break;
        const auto& step = plan.steps[at];
        const bool leavesPlace = step.isAddress || (isBeyond_ && at + 1 == end);
        if (!step.record.empty() && !((!leavesPlace || isClear()) && sendStep(step))) {
            if (!mayGoOn()) return false;
            if (last_ == Found::extra) at = before;
            if (last_ == Found::silent) at = 0;
            if (last_ == Found::prompted) at = pageBefore(plan, at);
            --at;
            ++repeated_;
            continue;
        }
        if (!step.record.empty()) before = at;
        showProgress();
        progressed_ = step.consumed;
    }
    if (plan.isMalformed) throw RuntimeError::typeMismatch();
    return true;
}

/// Sends a record with up to three tries, the address record that governs it first where the device may not know it:
/// after a try that failed behind another one, and behind the first segment whenever there was time for a restart.
bool HexProgrammer::sendStep(const SendStep& step) {
    constexpr int kTries = 3;
    const std::string record(step.record);
    for (int i = 0; i < kTries; ++i) {
        if (!step.isAddress && place_ != step.place && !place(step.place)) return false;
        if (step.isAddress) place_.reset();  // until it is known which of the two the device works with
        isBeyond_ = isBeyond_ || (step.isAddress && isBegun_ && !step.place.empty());
        isBegun_ = true;
        if (i == 1) ++repeated_;
        last_ = attempt(record);
        if (last_ == Found::taken) {
            place_ = step.place;
            isBeyond_ = isBeyond_ || !step.place.empty();
            return true;
        }
        if (last_ != Found::restarted) last_ = settle(last_);
        if (isBeyond_) place_.reset();
        if (!mayRepeat()) return false;
    }
    return false;
}

/// On a line that doubles answers or holds them back, one of them may by chance have stood for a record that was never
/// heard, and nothing would show it. So the whole image is sent once more before its last record, and that one with
/// nothing owed: the same chance would have to strike the same record twice.
bool HexProgrammer::startOver() {
    last_ = settle(Found::taken);
    isSecond_ = true;
    return last_ == Found::taken || mayGoOn();
}

/// A record that is heard a second time behind the next address record is stored in the wrong place. On a line that has
/// gone wrong before, nothing is under way any more when the place changes.
bool HexProgrammer::isClear() {
    last_ = isUneven_ && !isSettled_ ? settle(Found::taken) : Found::taken;
    return last_ == Found::taken;
}

bool HexProgrammer::place(std::string_view address) {
    isBeyond_ = isBeyond_ || !address.empty();
    if (!ProgramHex(address.empty() ? kToFirstSegment : std::string(address), false)) return false;
    place_ = address;
    if (address.empty()) isBeyond_ = false;
    return true;
}

/// Whether the try can be mended after the last record; if not, how the next one has to begin.
bool HexProgrammer::mayGoOn() {
    const bool isExtra = last_ == Found::extra;
    const bool isLate = last_ == Found::late;
    mustErase_ = last_ == Found::restarted || ((isExtra || isLate) && (isEchoPossible_ || isBeyond_)) ||
                 (last_ == Found::silent && (isBeyond_ || !isAnswered_));
    if (!session_.comm->PortOpen()) mustErase_ = false;  // nobody is there to have seen anything
    if (isLate && isBeyond_) ++lateTries_;
    const bool isMendable = isExtra || last_ == Found::prompted || mayBeBehindEcho();
    return !mustErase_ && isMendable && ++doubts_ <= kMostDoubts;
}

}  // namespace corvane
