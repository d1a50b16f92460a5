#pragma once

#include <functional>
#include <memory>
#include <unordered_map>

#include "platform/EventRuntime.h"

namespace corvane {

/// The runtime over one epoll set. A foreign event loop (the window's) watches descriptor() and calls dispatch().
class LinuxRuntime : public EventRuntime {
public:
    /// Called with the epoll events of a descriptor, inside waits too: it only moves data and posts handlers. It must
    /// read what is there or stop watching, or waits would no longer wait.
    using Io = std::function<void(std::uint32_t events)>;

    LinuxRuntime();
    ~LinuxRuntime() override;
    LinuxRuntime(const LinuxRuntime&) = delete;
    LinuxRuntime& operator=(const LinuxRuntime&) = delete;

    /// Starts watching a descriptor, or changes what is watched. Stop before closing it.
    void watch(int descriptor, std::uint32_t events, Io io);
    void unwatch(int descriptor);

    /// Readable while something is due.
    int descriptor() const { return epoll_; }

    std::uint32_t tick() override;
    std::int64_t micros() const override;
    double secondsOfDay() override;
    std::string timestamp() override;
    void Sleep(int ms) override;
    void WaitActivity(int ms) override;
    void expectNews(std::int64_t micros) override;
    int startTimer(int ms, std::function<void()> due) override;
    void stopTimer(int timer) override;
    void add(PolledSource& source) override;
    void remove(PolledSource& source) override;

private:
    struct Watch {
        std::uint32_t generation = 0;
        Io io;
    };

    /// A span of time in which to look without sleeping.
    struct Watchful {
        std::int64_t from = 0, until = 0;
    };

    bool moveIo() override { return moveIo(0); }
    bool moveIo(std::int64_t untilMicros);
    bool sleep(std::int64_t untilMicros);
    bool lookWithoutSleeping(std::int64_t untilMicros);
    bool awaitExpected(std::int64_t untilMicros);
    void learnLateness(std::int64_t micros);
    bool step(std::int64_t untilMicros);

    int epoll_;
    std::uint32_t generation_ = 0;
    std::unordered_map<int, std::shared_ptr<Watch>> watches_;
    std::unordered_map<int, std::shared_ptr<std::function<void()>>> timers_;  // by their descriptor
    Watchful watchful_;
    double lateness_ = 60;  // us that waking up takes here
    int sourceTimer_ = -1;
    std::int64_t nextService_ = 0;  // of busy sources during waits
    int quietServices_ = 0;         // of those in a row
    double dayOffset_ = 0;          // seconds from the monotonic clock to the time of day
};

}  // namespace corvane
