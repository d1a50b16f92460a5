#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/linux/events/LinuxRuntime.h"
#include "support/FakeRuntime.h"

namespace corvane::tests {

using Log = std::vector<std::string>;

constexpr int kForEver = 3600 * 1000;  // ms; the test's own limit ends it otherwise

struct LinuxRuntimeTest : testing::Test {
    LinuxRuntime runtime;
    Log log;

    std::function<void()> note(const std::string& text) {
        return [this, text] { log.push_back(text); };
    }

    Log events() {
        log.clear();
        runtime.DoEvents();
        return log;
    }
};

TEST_F(LinuxRuntimeTest, TimersEndWaitsAndRunInDoEventsUntilStopped) {
    const int timer = runtime.startTimer(3, note("timer"));
    runtime.WaitActivity(kForEver);
    EXPECT_EQ(log, Log());
    EXPECT_EQ(events(), Log{"timer"});
    runtime.Sleep(6);
    runtime.stopTimer(timer);
    runtime.Sleep(6);
    EXPECT_EQ(events(), Log());
}

/// Both sides: an expectation that is wrong in either direction costs nobody his news, and no wait its time.
template <typename Any>
void expectingChangesNoWait() {
    Any runtime;
    int came = 0;
    for (const std::int64_t expected : {0, 1000, 3000, 50000, 10000000}) {
        const int timer = runtime.startTimer(3, [&] { ++came; });
        runtime.expectNews(expected);
        runtime.WaitActivity(kForEver);
        runtime.DoEvents();
        runtime.stopTimer(timer);
        const auto before = runtime.micros();
        runtime.expectNews(expected);
        runtime.WaitActivity(10);
        EXPECT_GE(runtime.micros() - before, 10000) << expected;
    }
    EXPECT_EQ(came, 5);
}

TEST(Runtimes, ExpectingNewsChangesNoWait) {
    expectingChangesNoWait<LinuxRuntime>();
    expectingChangesNoWait<fakes::FakeRuntime>();
}

TEST_F(LinuxRuntimeTest, PostedHandlersRunInOrderAndCanBeForgotten) {
    const int mine = 0, yours = 0;
    runtime.post(&yours, note("forgotten"));
    runtime.post(&mine, [&] {
        log.push_back("first");
        runtime.post(&mine, note("posted by the first"));
        runtime.post(&yours, note("forgotten"));
        runtime.forget(&yours);
    });
    runtime.forget(&yours);
    EXPECT_EQ(events(), (Log{"first", "posted by the first"}));
}

TEST_F(LinuxRuntimeTest, HandlersNeitherNestNorStopOthersNorHoldItUp) {
    runtime.setPump(note("pump"));
    runtime.post(this, [&] {
        log.push_back("in");
        runtime.DoEvents();
        log.push_back("out");
    });
    runtime.post(this, note("next"));
    EXPECT_EQ(events(), (Log{"in", "pump", "out", "next", "pump"}));
    runtime.post(this, [] { throw std::runtime_error("handler"); });
    runtime.post(this, note("next"));
    EXPECT_THROW(runtime.DoEvents(), std::runtime_error);
    EXPECT_EQ(events(), (Log{"next", "pump"}));
    std::function<void()> again = [&] { runtime.post(this, again); };
    again();
    EXPECT_EQ(events(), Log{"pump"});
    runtime.forget(this);
}

TEST_F(LinuxRuntimeTest, FaceIsIdleInWaitsForActivityAndWhatItTakesInEndsThem) {
    runtime.setIdle(note("idle"));
    runtime.WaitActivity(2);
    runtime.Sleep(2);
    runtime.DoEvents();
    EXPECT_EQ(log, Log{"idle"});
    int timer = 0;
    timer = runtime.startTimer(2, [&] { runtime.stopTimer(timer); });
    runtime.setIdle([&] {
        runtime.Sleep(4);
        runtime.DoEvents();
    });
    runtime.WaitActivity(kForEver);
}

struct Source : PolledSource {
    bool busy = false, news = false;
    int serviced = 0;
    bool isBusy() override { return busy; }
    bool service() override { return ++serviced, news; }
    void dispatch() override {}
};

TEST_F(LinuxRuntimeTest, PolledSourceIsServedInWaitsWhileBusy) {
    Source source;
    runtime.add(source);
    runtime.Sleep(3);
    EXPECT_EQ(source.serviced, 0);
    runtime.DoEvents();
    EXPECT_EQ(source.serviced, 1);
    source.busy = true;
    runtime.Sleep(5);
    EXPECT_GE(source.serviced, 3);
    source.news = true;
    runtime.WaitActivity(kForEver);
    runtime.remove(source);
}

/// A descriptor that can be read from once for each put.
struct Event {
    ~Event() { ::close(fd); }
    void put() const { eventfd_write(fd, 1); }
    void take() const {
        eventfd_t count = 0;
        EXPECT_EQ(eventfd_read(fd, &count), 0);
    }

    const int fd = eventfd(0, EFD_NONBLOCK);
};

TEST_F(LinuxRuntimeTest, DescriptorsMoveDataInsideWaits) {
    const Event event;
    int taken = 0;
    runtime.watch(event.fd, POLLIN, [&](std::uint32_t) {
        event.take();
        if (++taken % 50) event.put();
    });
    pollfd asked{runtime.descriptor(), POLLIN, 0};
    event.put();
    EXPECT_EQ(poll(&asked, 1, 0), 1);
    runtime.WaitActivity(kForEver);
    EXPECT_EQ(taken, 1);
    const auto before = runtime.tick();
    const auto seconds = runtime.secondsOfDay();
    runtime.Sleep(20);
    runtime.WaitActivity(10);
    EXPECT_GE(runtime.tick() - before, 30u);
    EXPECT_NE(runtime.secondsOfDay(), seconds);
    EXPECT_EQ(taken, 50);
    event.put();
    runtime.DoEvents();
    event.put();
    runtime.unwatch(event.fd);
    runtime.DoEvents();
    EXPECT_EQ(taken, 51);
}

TEST_F(LinuxRuntimeTest, NewsOfAClosedDescriptorIsNoNewsOfTheNextOneOfItsNumber) {
    const Event a, b, silent;
    int calls = 0, stale = 0;
    const auto stop = [&](const Event& own, const Event& other) {
        return [&](std::uint32_t) {
            ++calls;
            own.take();
            runtime.unwatch(own.fd);
            runtime.unwatch(other.fd);
            dup2(silent.fd, other.fd);
            runtime.watch(other.fd, POLLIN, [&](std::uint32_t) { ++stale; });
        };
    };
    runtime.watch(a.fd, POLLIN, stop(a, b));
    runtime.watch(b.fd, POLLIN, stop(b, a));
    a.put();
    b.put();
    runtime.DoEvents();
    runtime.DoEvents();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(stale, 0);
}

}  // namespace corvane::tests
