#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

#include "platform/linux/events/LinuxRuntime.h"
#include "support/FakeRuntime.h"

namespace corvane {
namespace {

using Log = std::vector<std::string>;

constexpr int kForEver = 3600 * 1000;  // ms; the test's own limit ends it otherwise

/// What both runtimes do: the one over the system's clock and descriptors, and the one in virtual time.
template <typename Side>
class RuntimeContract : public testing::Test {
protected:
    Side side;
    Log log;

    std::function<void()> note(const std::string& text) {
        return [this, text] { log.push_back(text); };
    }

    Log events() {
        log.clear();
        side.DoEvents();
        return log;
    }
};

using Sides = testing::Types<fakes::FakeRuntime, LinuxRuntime>;
TYPED_TEST_SUITE(RuntimeContract, Sides);

TYPED_TEST(RuntimeContract, WaitsTakeTheirTime) {
    auto& runtime = this->side;
    const auto before = runtime.tick();
    const auto seconds = runtime.secondsOfDay();
    runtime.Sleep(20);
    EXPECT_GE(runtime.tick() - before, 20u);
    EXPECT_NE(runtime.secondsOfDay(), seconds);
    const auto half = runtime.tick();
    runtime.WaitActivity(10);
    EXPECT_GE(runtime.tick() - half, 10u);
}

TYPED_TEST(RuntimeContract, TimersEndWaitsAndRunInDoEventsUntilStopped) {
    auto& runtime = this->side;
    const int timer = runtime.startTimer(3, this->note("timer"));
    runtime.WaitActivity(kForEver);
    EXPECT_EQ(this->log, Log());
    EXPECT_EQ(this->events(), Log{"timer"});
    runtime.Sleep(6);
    runtime.stopTimer(timer);
    runtime.Sleep(6);
    EXPECT_EQ(this->events(), Log());
    runtime.stopTimer(timer);
}

TYPED_TEST(RuntimeContract, PostedHandlersRunInOrderAndCanBeForgotten) {
    auto& runtime = this->side;
    const int mine = 0, yours = 0;
    runtime.post(&mine, [&] {
        this->log.push_back("first");
        runtime.post(&mine, this->note("posted by the first"));
        runtime.post(&yours, this->note("forgotten"));
        runtime.forget(&yours);
    });
    runtime.post(&yours, this->note("forgotten"));
    EXPECT_EQ(this->log, Log());
    EXPECT_EQ(this->events(), (Log{"first", "posted by the first"}));
}

TYPED_TEST(RuntimeContract, HandlersNeitherNestNorStopOthersNorHoldItUp) {
    auto& runtime = this->side;
    runtime.setPump(this->note("pump"));
    runtime.post(this, [&] {
        this->log.push_back("in");
        runtime.DoEvents();
        this->log.push_back("out");
    });
    runtime.post(this, this->note("next"));
    EXPECT_EQ(this->events(), (Log{"in", "pump", "out", "next", "pump"}));
    runtime.post(this, [] { throw std::runtime_error("handler"); });
    runtime.post(this, this->note("next"));
    EXPECT_THROW(runtime.DoEvents(), std::runtime_error);
    EXPECT_EQ(this->events(), (Log{"next", "pump"}));
    std::function<void()> again = [&] { runtime.post(this, again); };
    again();
    EXPECT_EQ(this->events(), Log{"pump"});
    runtime.forget(this);
}

TYPED_TEST(RuntimeContract, FaceIsIdleInWaitsForActivityAndWhatItTakesInEndsThem) {
    auto& runtime = this->side;
    runtime.setIdle(this->note("idle"));
    runtime.WaitActivity(2);
    runtime.Sleep(2);
    runtime.DoEvents();
    EXPECT_EQ(this->log, Log{"idle"});
    int timer = 0;
    timer = runtime.startTimer(2, [&] { runtime.stopTimer(timer); });
    runtime.setIdle([&] {
        runtime.Sleep(4);
        runtime.DoEvents();
    });
    runtime.WaitActivity(kForEver);
}

struct Source : PolledSource {
    bool busy = false;
    bool news = false;
    int serviced = 0, dispatched = 0;
    bool isBusy() override { return busy; }
    bool service() override {
        ++serviced;
        return news;
    }
    void dispatch() override { ++dispatched; }
};

TYPED_TEST(RuntimeContract, PolledSourceIsServedInWaitsWhileBusy) {
    auto& runtime = this->side;
    Source source;
    runtime.add(source);
    runtime.Sleep(3);
    EXPECT_EQ(source.serviced, 0);
    runtime.DoEvents();
    EXPECT_EQ(source.serviced, 1);
    source.busy = true;
    runtime.Sleep(5);
    EXPECT_GE(source.serviced, 3);
    EXPECT_EQ(source.dispatched, 1);
    source.news = true;
    runtime.WaitActivity(kForEver);
    runtime.remove(source);
    const int before = source.serviced;
    runtime.Sleep(2);
    runtime.DoEvents();
    EXPECT_EQ(source.serviced, before);
}

TEST(LinuxRuntime, BusySourceThatIsSilentIsServedLessOften) {
    LinuxRuntime runtime;
    Source source;
    source.busy = true;
    runtime.add(source);
    runtime.Sleep(400);
    EXPECT_LE(source.serviced, 300);
    runtime.remove(source);
}

struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends), 0); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int out() const { return ends[0]; }
    void put() const { EXPECT_EQ(::write(ends[1], "x", 1), 1); }
    void take() const {
        char c = 0;
        EXPECT_EQ(::read(ends[0], &c, 1), 1);
    }

    int ends[2] = {-1, -1};
};

TEST(LinuxRuntime, DescriptorsMoveDataInsideWaits) {
    LinuxRuntime runtime;
    const Pipe pipe;
    int taken = 0;
    runtime.watch(pipe.out(), POLLIN, [&](std::uint32_t) {
        pipe.take();
        if (++taken % 50) pipe.put();
    });
    pollfd asked{runtime.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&asked, 1, 0), 0);
    pipe.put();
    EXPECT_EQ(poll(&asked, 1, 0), 1);
    runtime.WaitActivity(kForEver);
    EXPECT_EQ(taken, 1);
    const auto before = runtime.tick();
    runtime.Sleep(20);
    EXPECT_GE(runtime.tick() - before, 20u);
    EXPECT_EQ(taken, 50);
    pipe.put();
    runtime.DoEvents();
    EXPECT_EQ(taken, 51);
    pipe.put();
    runtime.unwatch(pipe.out());
    runtime.DoEvents();
    EXPECT_EQ(taken, 51);
}

TEST(LinuxRuntime, NewsOfAClosedDescriptorIsNoNewsOfTheNextOneOfItsNumber) {
    for (const bool reused : {false, true}) {
        LinuxRuntime runtime;
        const Pipe a, b, silent;
        int calls = 0, stale = 0;
        const auto stop = [&](const Pipe& own, const Pipe& other) {
            return [&, reused](std::uint32_t) {
                ++calls;
                own.take();
                runtime.unwatch(own.out());
                runtime.unwatch(other.out());
                if (!reused) return;
                dup2(silent.out(), other.out());
                runtime.watch(other.out(), POLLIN, [&](std::uint32_t) { ++stale; });
            };
        };
        runtime.watch(a.out(), POLLIN, stop(a, b));
        runtime.watch(b.out(), POLLIN, stop(b, a));
        a.put();
        b.put();
        runtime.DoEvents();
        runtime.DoEvents();
        EXPECT_EQ(calls, 1) << reused;
        EXPECT_EQ(stale, 0);
    }
}

}  // namespace
}  // namespace corvane
