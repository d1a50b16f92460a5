#include "support/FakeRuntime.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace corvane::fakes {
namespace {

constexpr Micros kLongestRun = 24LL * 3600 * 1000000;
constexpr int kMostCallsWithoutWaiting = 100000;

}  // namespace

void FakeRuntime::at(std::int64_t ms, std::function<void()> handler) { planned_.emplace(ms * 1000, std::move(handler)); }

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

/// Moves to the next news or to the given moment, whichever comes first; true when news have come.
bool FakeRuntime::advance(Micros until) {
    callsWithoutWaiting_ = 0;
    const bool busy = std::any_of(polled_.begin(), polled_.end(), [](auto* source) { return source->isBusy(); });
    const auto next = nextNews();
    Micros to = next ? std::clamp(*next, now_, until) : until;
    if (busy) to = std::min(to, now_ + 1000);
    // A handler that is due but waits for DoEvents is no news twice, and time must not stand still because of it.
    if (to == now_ && now_ < until) to = std::min(until, now_ + 1000);
    now_ = to;
    if (now_ > kLongestRun) throw std::runtime_error("the code under test waited for more than a day");
    bool news = false;
    for (auto* source : timed_) {
        const auto moment = source->nextAt();
        if (moment && *moment <= now_) {
            source->act(now_);
            news = true;
        }
    }
    for (auto& [id, timer] : timers_) {
        if (timer.due > now_) continue;
        while (timer.due <= now_) timer.due += timer.period;
        posted_.push_back({&timer, timer.handler});
        news = true;
    }
    while (!planned_.empty() && planned_.begin()->first <= now_) {
        posted_.push_back({this, std::move(planned_.begin()->second)});
        planned_.erase(planned_.begin());
        news = true;
    }
    if (busy) {
        for (auto* source : polled_) news = source->service() || news;
    }
    return news;
}

void FakeRuntime::Sleep(int ms) {
    const Micros end = now_ + ms * 1000LL;
    while (now_ < end) advance(end);
}

void FakeRuntime::WaitActivity(int ms) {
    const Micros end = now_ + ms * 1000LL;
    while (now_ < end && !advance(end)) continue;
}

void FakeRuntime::DoEvents() {
    ++doEventsCalls_;
    if (++callsWithoutWaiting_ > kMostCallsWithoutWaiting) throw std::runtime_error("the code under test spins");
    if (!dispatching_) {
        dispatching_ = true;
        for (int round = 0; round < 1000 && !posted_.empty(); ++round) {
            const auto next = std::move(posted_.front());
            posted_.pop_front();
            next.handler();
        }
        for (std::size_t i = 0; i < polled_.size(); ++i) {
            polled_[i]->service();
            polled_[i]->dispatch();
        }
        dispatching_ = false;
    }
    if (pump_) pump_();
}

int FakeRuntime::startTimer(int ms, std::function<void()> due) {
    timers_[++lastTimer_] = {ms * 1000LL, now_ + ms * 1000LL, std::move(due)};
    return lastTimer_;
}

void FakeRuntime::forget(const void* owner) {
    std::erase_if(posted_, [owner](const Posted& posted) { return posted.owner == owner; });
}

}  // namespace corvane::fakes
