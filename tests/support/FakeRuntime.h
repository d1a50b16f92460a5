#pragma once

#include <functional>
#include <map>
#include <optional>
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
    Micros micros() const { return now_; }
    std::int64_t ms() const { return now_ / 1000; }

    /// Runs a handler (an operator's click, say) in the first DoEvents at or after that moment.
    void at(std::int64_t ms, std::function<void()> handler);

    /// A wait for activity takes so many ms when nothing stirs, as a real one may: campaigns of many runs save time.
    void stretchWaits(int ms) { stretch_ = ms; }

    /// Starts the tick counter, or the time of day, at another value.
    void tickAtStart(std::uint32_t tick) { tickOffset_ = tick; }
    void secondsOfDayAtStart(double seconds) { dayOffset_ = seconds; }

    void attach(TimedSource& source) { timed_.push_back(&source); }
    void detach(TimedSource& source) { std::erase(timed_, &source); }

    std::uint32_t tick() override { return static_cast<std::uint32_t>(now_ / 1000) + tickOffset_; }
    double secondsOfDay() override;
    std::string timestamp() override { return "2026-11-24 14:02:07"; }
    void Sleep(int ms) override;
    void WaitActivity(int ms) override;
    void DoEvents() override;
    int startTimer(int ms, std::function<void()> due) override;
    void stopTimer(int timer) override;

private:
    struct Timer {
        Micros period, due;
        std::function<void()> handler;
    };

    std::optional<Micros> nextNews() const;
    bool moveIo() override;
    bool advance(Micros until);

    Micros now_ = 0;
    std::uint32_t tickOffset_ = 1000;
    double dayOffset_ = 36000;
    int stretch_ = 0;
    int callsWithoutWaiting_ = 0;
    int newsInOneMoment_ = 0;
    int lastTimer_ = 0;
    std::multimap<Micros, std::function<void()>> planned_;
    std::map<int, Timer> timers_;
    std::vector<TimedSource*> timed_;
};

}  // namespace corvane::fakes
