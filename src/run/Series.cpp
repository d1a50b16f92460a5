#include "run/Series.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr char kBootLoader[] = "boot loader";  // what a device says that has nothing but its prompt

}  // namespace

bool Series::next(const Outcome& outcome) {
    place_ = {};
    if (outcome.end != RunEnd::updated || isEnded_) return false;
    const auto& last = outcome.facts;
    lastVersion_ = last.versionNow;
    silent_ = looks_ = 0;
    isWaiting_ = true;
    session_.cancel.begin();
    view_.running(true);
    view_.cancellable(true);
    view_.phase(RunPhase::removal);
    bool isThere = false;
    bool isGone = false;
    while (!isThere && !session_.cancel.isRequested()) {
        const bool hasPort = isPortThere(last.portName);
        const auto answer = hasPort ? ask(last) : std::string();
        if (!isGone && hasGone(answer, hasPort)) {
            isGone = true;
            view_.phase(RunPhase::nextDevice);
        }
        isThere = isGone && !answer.empty();
        if (!isThere) pause();
    }
    isThere = isThere && !session_.cancel.isRequested();
    session_.cancel.end();
    view_.cancellable(false);
    isWaiting_ = false;
    view_.phase(RunPhase::idle);
    view_.running(false);
    if (isThere) place_ = {last.portName, last.settings};
    return isThere;
}

void Series::end() {
    isEnded_ = true;
    if (isWaiting_) session_.cancel.request();
}

/// A device may miss one question. Another version than the one it has said is another device, put in its place
/// between two questions. One that nobody has asked yet may still be starting, and has left the bus for that.
bool Series::hasGone(const std::string& answer, bool hasPort) {
    constexpr int kSilence = 2, kStart = 5;  // questions
    ++looks_;
    if (!answer.empty()) {
        const int silent = std::exchange(silent_, 0);
        if (answer == kBootLoader && silent > 0) return true;  // the last one has left it
        if (lastVersion_.empty()) lastVersion_ = answer;
        return answer != lastVersion_;
    }
    ++silent_;
    if (lastVersion_.empty() && looks_ < kStart) return false;
    return !hasPort || silent_ >= kSilence;
}

bool Series::isPortThere(const std::string& name) {
    const auto names = scanner_.portNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// What a device there says at the settings at which the last one was found: its version, or the prompt of a boot
/// loader if that is how it was found. The port is closed again: while it is open, an adapter that is plugged in anew
/// gets another name.
std::string Series::ask(const RunFacts& last) {
    constexpr std::int32_t kQuestion = 1000;  // ms
    std::string answer;
    try {
        if (scanner_.openAgain(last.portName, last.settings)) {
            const bool isInBootLoader = last.protocolName.empty();
            if (isInBootLoader && isp_.isPrompting()) answer = kBootLoader;
            if (!isInBootLoader) (void)scanner_.askVersion({last.settings, last.protocolName}, kQuestion, answer);
        }
        ports_.close(view_);
    } catch (const RuntimeError&) {
        answer.clear();  // unplugged in the middle of the question
    }
    return answer;
}

void Series::pause() {
    constexpr std::int32_t kPause = 2000;  // ms from one question to the next
    constexpr int kStep = 50;
    clsTimeout whole(session_.runtime);
    whole.Timeout(kPause);
    while (!whole.IsTimeout() && !session_.cancel.isRequested()) {
        session_.runtime.Sleep(kStep);
        session_.runtime.DoEvents();
    }
}

}  // namespace corvane
