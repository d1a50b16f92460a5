#include "bench/Loop.h"

#include <algorithm>
#include <time.h>

namespace corvane::bench {
namespace {

// The longer a sleep, the later the processor comes out of it; so the last part of a long one is slept apart, and
// shortly before the moment the clock is watched.
constexpr Micros kWatches = 50;
constexpr Micros kLastSleep = 250;
constexpr Micros kShortSleep = 400;

Micros monotonic() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

}  // namespace

Loop::Loop() : start_(monotonic()) {}

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
        if (moment && *moment <= now()) timed->act(now());
    }
}

/// Returns when a descriptor stirs or the moment has come.
void Loop::wait(std::optional<Micros> until) {
    for (;;) {
        timespec span{};
        if (until) {
            const Micros left = *until - now() - kWatches;
            const Micros sleep = std::max<Micros>(0, left > kShortSleep ? left - kLastSleep : left);
            span = {sleep / 1000000, sleep % 1000000 * 1000};
        }
        const int stirred = ppoll(polled_.data(), polled_.size(), until ? &span : nullptr, nullptr);
        if (stirred != 0 || (until && now() >= *until)) return;
    }
}

}  // namespace corvane::bench
