#include "support/FakeRuntime.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace corvane::fakes {
namespace {

constexpr Micros kLongestRun = 24LL * 3600 * 1000000;
constexpr int kMostCallsWithoutWaiting = 100000;
constexpr int kMostNewsInOneMoment = 1000;

}  // namespace

void FakeRuntime::at(std::int64_t ms, std::function<void()> handler) {
    planned_.emplace(ms * 1000, std::move(handler));
}

double FakeRuntime::secondsOfDay() { return std::fmod(dayOffset_ + static_cast<double>(now_) / 1e6, 86400); }

std::optional<Micros> FakeRuntime::nextNews() const {
    std::optional<Micros> next;
    const auto consider = [&next](std::optional<Micros> moment) {
        if (moment && (!next || *moment < *next)) next = moment;
    };
    for (const auto* source : timed_) consider(source->nextAt());
    for (const auto& [id, timer] : timers_) consider(timer.due);
    if (!planned_.empty()) consider(planned_.begin()->first);
    return next;
}

/// Lets act what is due by now; true when something new has come in.
bool FakeRuntime::moveIo() {
    bool news = false;
    for (std::size_t i = 0; i < timed_.size(); ++i) {
        auto* source = timed_[i];
        const auto moment = source->nextAt();
        if (!moment || *moment > now_) continue;
        source->act(now_);
        news = source->hasNews() || news;
    }
    for (auto& [id, timer] : timers_) {
        if (timer.due > now_) continue;
        while (timer.due <= now_) timer.due += timer.period;
        post(&timer, timer.handler);
        news = true;
    }
    while (!planned_.empty() && planned_.begin()->first <= now_) {
        post(this, std::move(planned_.begin()->second));
        planned_.erase(planned_.begin());
        news = true;
    }
    if (news) countNews();
    return news;
}

/// Moves to the next news or to the given moment, whichever comes first; true when news have come.
bool FakeRuntime::advance(Micros until) {
    callsWithoutWaiting_ = 0;
    // A source that is due for ever must not make time stand still.
    if (moveIo() && ++newsInOneMoment_ < kMostNewsInOneMoment) return true;
    newsInOneMoment_ = 0;
    const bool busy = isAnySourceBusy();
    const auto next = nextNews();
    const Micros step = std::min(until, now_ + 1000);
    const Micros to = std::min(next && *next > now_ ? *next : next ? step : until, busy ? step : until);
    now_ = to;
    if (now_ > kLongestRun) throw std::runtime_error("the code under test waited for more than a day");
    const bool moved = moveIo();
    return (busy && serviceSources()) || moved;
}

void FakeRuntime::Sleep(int ms) {
    const Micros end = now_ + ms * 1000LL;
    while (now_ < end) advance(end);
}

void FakeRuntime::WaitActivity(int ms) {
    const Micros end = now_ + std::max(ms, stretch_) * 1000LL;
    if (bringsNewsAtOnce()) return;
    while (now_ < end && !advance(end)) continue;
}

void FakeRuntime::DoEvents() {
    if (++callsWithoutWaiting_ > kMostCallsWithoutWaiting) throw std::runtime_error("the code under test spins");
    EventRuntime::DoEvents();
}

int FakeRuntime::startTimer(int ms, std::function<void()> due) {
    const Micros period = std::max(ms, 1) * 1000LL;
    timers_[++lastTimer_] = {period, now_ + period, std::move(due)};
    return lastTimer_;
}

void FakeRuntime::stopTimer(int timer) {
    const auto found = timers_.find(timer);
    if (found == timers_.end()) return;
    forget(&found->second);
    timers_.erase(found);
}

}  // namespace corvane::fakes
