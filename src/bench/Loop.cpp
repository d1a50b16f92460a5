#include "bench/Loop.h"

#include <algorithm>
#include <sched.h>
#include <sys/prctl.h>
#include <time.h>

namespace corvane::bench {
namespace {

// The longer a sleep, the later the processor comes out of it; so the last part of a long one is slept apart, and
// shortly before the moment the clock is watched.
constexpr Micros kWatches = 100;
constexpr Micros kLastSleep = 300;
constexpr Micros kShortSleep = 450;
constexpr Micros kListens = 500;  // after it has acted, for what a program answers at once: a real device is not asleep

Micros monotonic() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

}  // namespace

Loop::Loop() : start_(monotonic()) {
    constexpr unsigned long kSlack = 1000;  // ns by which the system may lengthen a sleep, instead of 50 us
    ::prctl(PR_SET_TIMERSLACK, kSlack, 0, 0, 0);
}

Micros Loop::now() const { return monotonic() - start_; }

void Loop::watch(int descriptor, std::function<void()> readable) {
    watches_[descriptor] = std::make_shared<std::function<void()>>(std::move(readable));
}

void Loop::unwatch(int descriptor) { watches_.erase(descriptor); }

std::optional<Micros> Loop::nextAt() const {
    std::optional<Micros> next;
    for (const auto* timed : timed_) {
        const auto moment = timed->nextAt();
        if (moment && (!next || *moment < *next)) next = moment;
    }
    return next;
}

void Loop::run(std::optional<Micros> until) {
    stopped_ = false;
    do step(until);
    while (!stopped_ && !(until && now() >= *until));
}

void Loop::step(std::optional<Micros> until) {
    polled_.clear();
    for (const auto& [descriptor, handler] : watches_) polled_.push_back({descriptor, POLLIN, 0});
    const auto next = nextAt();
    wait(next && until ? std::min(*next, *until) : next ? next : until);
    for (const auto& polled : polled_) {
        if (!polled.revents) continue;
        const auto found = watches_.find(polled.fd);
        if (found == watches_.end()) continue;
        const auto keep = found->second;  // it may unwatch itself
        (*keep)();
    }
    const auto due = timed_;
    for (auto* timed : due) {
        const auto moment = timed->nextAt();
        if (!moment || *moment > now()) continue;
        timed->act(now());
        listensUntil_ = now() + kListens;
    }
}

/// Returns when a descriptor stirs or the moment has come.
void Loop::wait(std::optional<Micros> until) {
    for (;;) {
        timespec span{};
        const bool listens = now() < listensUntil_;
        if (listens) ::sched_yield();  // to the program, when there is one processor for both
        if (until && !listens) {
            const Micros left = *until - now() - kWatches;
            const Micros sleep = std::max<Micros>(0, left > kShortSleep ? left - kLastSleep : left);
            span = {sleep / 1000000, sleep % 1000000 * 1000};
        }
        const int stirred = ppoll(polled_.data(), polled_.size(), until || listens ? &span : nullptr, nullptr);
        if (stirred != 0 || (until && now() >= *until)) return;
    }
}

}  // namespace corvane::bench
