#include "platform/linux/events/LinuxRuntime.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <sched.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/timerfd.h>
#include <system_error>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace corvane {
namespace {

constexpr std::int64_t kMicrosPerMs = 1000;
constexpr int kLongestQuietWait = 10;    // ms that a wait for activity may stretch to
constexpr int kIdleServicePeriod = 500;  // ms between two looks at a source that is not busy
constexpr int kQuietServices = 100;      // looks without news after which a busy one is asked half as often

// Looking without sleeping takes at most these parts of the time until something is expected: before, and after it.
constexpr std::int64_t kEarlyShare = 2;
constexpr std::int64_t kLateShare = 6;
constexpr std::int64_t kLongestWatch = 250;  // us, of either
constexpr std::int64_t kMargin = 10;         // us before it is expected

std::int64_t monotonicMicros() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

/// The time of day is taken once and then counted by the monotonic clock, so that neither a correction of the system's
/// clock nor summer time cuts a time-out short.
double secondsFromMonotonicToDay() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const double day = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec + static_cast<double>(now.tv_nsec) / 1e9;
    return day - static_cast<double>(monotonicMicros()) / 1e6;
}

int checked(int descriptor, const char* what) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
    return descriptor;
}

}  // namespace

LinuxRuntime::LinuxRuntime()
    : epoll_(checked(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")), dayOffset_(secondsFromMonotonicToDay()) {
    constexpr unsigned long kSlack = 1000;        // ns
    ::prctl(PR_SET_TIMERSLACK, kSlack, 0, 0, 0);  // instead of 50 us, by which waits would end later than they need to
}

LinuxRuntime::~LinuxRuntime() {
    for (const auto& timer : timers_) ::close(timer.first);
    ::close(epoll_);
}

void LinuxRuntime::watch(int descriptor, std::uint32_t events, Io io) {
    auto& entry = watches_[descriptor];
    const int operation = entry ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
    entry = std::make_shared<Watch>(Watch{++generation_, std::move(io)});
    epoll_event event{};
    event.events = events;
    event.data.u64 = static_cast<std::uint64_t>(generation_) << 32 | static_cast<std::uint32_t>(descriptor);
    if (epoll_ctl(epoll_, operation, descriptor, &event) < 0) {
        const int error = errno;
        watches_.erase(descriptor);
        throw std::system_error(error, std::generic_category(), "epoll_ctl");
    }
}

void LinuxRuntime::unwatch(int descriptor) {
    if (watches_.erase(descriptor)) epoll_ctl(epoll_, EPOLL_CTL_DEL, descriptor, nullptr);
}

std::uint32_t LinuxRuntime::tick() { return static_cast<std::uint32_t>(monotonicMicros() / kMicrosPerMs); }

std::int64_t LinuxRuntime::micros() const { return monotonicMicros(); }

double LinuxRuntime::secondsOfDay() {
    constexpr double kDay = 86400;
    const double seconds = std::fmod(static_cast<double>(monotonicMicros()) / 1e6 + dayOffset_, kDay);
    return seconds < 0 ? seconds + kDay : seconds;
}

std::string LinuxRuntime::timestamp() {
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char text[32];
    return {text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local)};
}

void LinuxRuntime::expectNews(std::int64_t micros) {
    const auto due = monotonicMicros() + micros;
    watchful_.from = due - std::min(static_cast<std::int64_t>(lateness_) + kMargin, micros / kEarlyShare);
    watchful_.until = due + std::min(micros / kLateShare, kLongestWatch);
}

/// Most of the times that waking up took, and not the longest: another program's work is part of some.
void LinuxRuntime::learnLateness(std::int64_t micros) {
    constexpr double kUp = 1.0 / 4, kDown = 1.0 / 32;
    const auto late = static_cast<double>(std::min(micros, kLongestWatch));
    lateness_ += (late - lateness_) * (late > lateness_ ? kUp : kDown);
}

/// Sleeps until a descriptor has something, or the moment has come; True when one has.
bool LinuxRuntime::sleep(std::int64_t untilMicros) {
    const auto left = untilMicros - monotonicMicros();
    if (left <= 0) return false;
    const timespec timeout{left / 1000000, left % 1000000 * 1000};
    pollfd epoll{epoll_, POLLIN, 0};  // epoll_pwait2 would do, but kernels before 5.11 do not have it
    return ppoll(&epoll, 1, &timeout, nullptr) != 0;
}

/// The same without sleeping. Whoever shares the processor, the other side of a pseudo-terminal say, gets it.
bool LinuxRuntime::lookWithoutSleeping(std::int64_t untilMicros) {
    pollfd epoll{epoll_, POLLIN, 0};
    while (monotonicMicros() < untilMicros) {
        if (::poll(&epoll, 1, 0) != 0) return true;
        ::sched_yield();
    }
    return false;
}

/// Up to the end of the span in which something is expected, if that has not passed; True when it has come.
bool LinuxRuntime::awaitExpected(std::int64_t untilMicros) {
    const auto watchful = std::exchange(watchful_, {});
    const auto from = std::min(watchful.from, untilMicros);
    const bool sleeps = monotonicMicros() < from;
    const bool isThere = sleep(from);
    // What came while it was about to wake up says as much about that as an empty line does.
    if (sleeps && monotonicMicros() >= from) learnLateness(monotonicMicros() - from);
    return isThere || lookWithoutSleeping(std::min(watchful.until, untilMicros));
}

/// Waits for I/O until the given moment, once. True when a descriptor had something.
bool LinuxRuntime::moveIo(std::int64_t untilMicros) {
    std::array<epoll_event, 16> events{};
    if (untilMicros > monotonicMicros()) {
        if (!awaitExpected(untilMicros) && !sleep(untilMicros)) return false;
    }
    const int count = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count; ++i) {
        const std::uint64_t data = events[static_cast<std::size_t>(i)].data.u64;
        const auto found = watches_.find(static_cast<int>(data & 0xFFFFFFFF));
        if (found == watches_.end() || found->second->generation != data >> 32) continue;
        const auto keep = found->second;  // the handler may stop its own watch
        keep->io(events[static_cast<std::size_t>(i)].events);
    }
    if (count > 0) countNews();
    return count > 0;
}

/// Waits for I/O until the given moment, or until busy sources are to be served, and serves those; true when something
/// has come in.
bool LinuxRuntime::step(std::int64_t untilMicros) {
    if (!isAnySourceBusy()) return moveIo(untilMicros);
    const bool moved = moveIo(std::min(untilMicros, nextService_));
    const std::int64_t now = monotonicMicros();
    // Counted from when it was due: what the program does between two waits must not slow the reports down.
    const std::int64_t period = quietServices_ < kQuietServices ? kMicrosPerMs : 2 * kMicrosPerMs;
    if (now >= nextService_) nextService_ = std::max(nextService_ + period, now);
    const bool served = serviceSources();
    quietServices_ = served ? 0 : std::min(quietServices_ + 1, kQuietServices);
    return served || moved;
}

void LinuxRuntime::Sleep(int ms) {
    const std::int64_t end = monotonicMicros() + ms * kMicrosPerMs;
    while (monotonicMicros() < end) step(end);
}

void LinuxRuntime::WaitActivity(int ms) {
    const std::int64_t end = monotonicMicros() + std::max(ms, kLongestQuietWait) * kMicrosPerMs;
    if (bringsNewsAtOnce()) return;
    while (monotonicMicros() < end && !step(end)) continue;
}

int LinuxRuntime::startTimer(int ms, std::function<void()> due) {
    const int timer = checked(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create");
    ms = std::max(ms, 1);  // 0 would disarm it
    const timespec period{ms / 1000, ms % 1000 * 1000000L};
    const itimerspec setting{period, period};
    timerfd_settime(timer, 0, &setting, nullptr);
    const auto handler = std::make_shared<std::function<void()>>(std::move(due));
    timers_[timer] = handler;
    watch(timer, EPOLLIN, [this, timer, handler](std::uint32_t) {
        std::uint64_t expirations = 0;
        if (::read(timer, &expirations, sizeof expirations) == sizeof expirations) {
            post(handler.get(), [handler] { (*handler)(); });
        }
    });
    return timer;
}

void LinuxRuntime::stopTimer(int timer) {
    const auto found = timers_.find(timer);
    if (found == timers_.end()) return;
    forget(found->second.get());
    unwatch(timer);
    timers_.erase(found);
    ::close(timer);
}

void LinuxRuntime::add(PolledSource& source) {
    if (!hasSources()) sourceTimer_ = startTimer(kIdleServicePeriod, [] {});  // dispatch itself serves the sources
    EventRuntime::add(source);
}

void LinuxRuntime::remove(PolledSource& source) {
    EventRuntime::remove(source);
    if (!hasSources() && sourceTimer_ >= 0) {
        stopTimer(sourceTimer_);
        sourceTimer_ = -1;
    }
}

}  // namespace corvane
