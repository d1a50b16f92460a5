#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <vector>

#include "platform/EventRuntime.h"

namespace corvane::fakes {

using Micros = std::int64_t;

/// Something that moves bytes at known moments of virtual time.
class TimedSource {
public:
    virtual ~TimedSource() = default;
    virtual std::optional<Micros> nextAt() const = 0;
    virtual void act(Micros now) = 0;

    /// False when the last act brought nothing in, so that a wait for activity goes on.
    virtual bool hasNews() const { return true; }
};

/// Virtual time: it stands still while code runs and moves only when the code waits; a wait for activity is never
/// stretched, so that both sides of each time-out show. Throws when code spins without waiting, or waits longer than
/// any run may take.
class FakeRuntime : public EventRuntime {
public:
    Micros micros() const override { return now_; }
    std::int64_t ms() const { return now_ / 1000; }

    /// Runs a handler (an operator's click, say) in the first DoEvents at or after that moment.
    void at(std::int64_t ms, std::function<void()> handler) { planned_.emplace(ms * 1000, std::move(handler)); }

    /// A wait for activity takes so many ms when nothing stirs, as a real one may: campaigns of many runs save time.
    void stretchWaits(int ms) { stretch_ = ms; }

    /// Starts the tick counter, or the time of day, at another value.
    void tickAtStart(std::uint32_t tick) { tickOffset_ = tick; }
    void secondsOfDayAtStart(double seconds) { dayOffset_ = seconds; }

    void attach(TimedSource& source) { timed_.push_back(&source); }
    void detach(TimedSource& source) { std::erase(timed_, &source); }

    std::uint32_t tick() override { return static_cast<std::uint32_t>(now_ / 1000) + tickOffset_; }
    double secondsOfDay() override { return std::fmod(dayOffset_ + static_cast<double>(now_) / 1e6, 86400); }
    std::string timestamp() override { return "2026-11-24 14:02:07"; }
    void Sleep(int ms) override {
        const Micros end = now_ + ms * 1000LL;
        while (now_ < end) advance(end);
    }
    void WaitActivity(int ms) override {
        const Micros end = now_ + std::max(ms, stretch_) * 1000LL;
        if (bringsNewsAtOnce()) return;
        while (now_ < end && !advance(end)) continue;
    }
    void expectNews(Micros micros) override { expected_ = now_ + micros; }

    /// When the next answer was said to come in.
    Micros expected() const { return expected_; }

    void DoEvents() override {
        if (++callsWithoutWaiting_ > kMostCallsWithoutWaiting) throw std::runtime_error("the code under test spins");
        EventRuntime::DoEvents();
    }
    int startTimer(int ms, std::function<void()> due) override {
        const Micros period = std::max(ms, 1) * 1000LL;
        timers_[++lastTimer_] = {period, now_ + period, std::move(due)};
        return lastTimer_;
    }
    void stopTimer(int timer) override {
        const auto found = timers_.find(timer);
        if (found == timers_.end()) return;
        forget(&found->second);
        timers_.erase(found);
    }

private:
    static constexpr Micros kLongestRun = 24LL * 3600 * 1000000;
    static constexpr int kMostCallsWithoutWaiting = 100000;
    static constexpr int kMostNewsInOneMoment = 1000;

    struct Timer {
        Micros period, due;
        std::function<void()> handler;
    };

    std::optional<Micros> nextNews() const {
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
    bool moveIo() override {
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
    bool advance(Micros until) {
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

    Micros now_ = 0;
    std::uint32_t tickOffset_ = 1000;
    double dayOffset_ = 36000;
    int stretch_ = 0;
    Micros expected_ = 0;
    int callsWithoutWaiting_ = 0;
    int newsInOneMoment_ = 0;
    int lastTimer_ = 0;
    std::multimap<Micros, std::function<void()>> planned_;
    std::map<int, Timer> timers_;
    std::vector<TimedSource*> timed_;
};

}  // namespace corvane::fakes
