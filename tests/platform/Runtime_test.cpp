#include <algorithm>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

#include "platform/linux/LinuxRuntime.h"
#include "support/FakeRuntime.h"

namespace corvane {
namespace {

/// What both runtimes do: the one over the system's clock and descriptors, and the one in virtual time.
template <typename Side>
class RuntimeContract : public testing::Test {
protected:
    Side runtime;
    std::vector<std::string> log;

    std::function<void()> note(const std::string& text) {
        return [this, text] { log.push_back(text); };
    }
};

using Sides = testing::Types<fakes::FakeRuntime, LinuxRuntime>;
TYPED_TEST_SUITE(RuntimeContract, Sides);

using Log = std::vector<std::string>;

TYPED_TEST(RuntimeContract, WaitsTakeTheirTime) {
    auto& runtime = this->runtime;
    const auto before = runtime.tick();
    const auto seconds = runtime.secondsOfDay();
    runtime.Sleep(20);
    EXPECT_GE(runtime.tick() - before, 20u);
    EXPECT_NE(runtime.secondsOfDay(), seconds);
    const auto half = runtime.tick();
    runtime.WaitActivity(10);
    EXPECT_GE(runtime.tick() - half, 10u);
}

TYPED_TEST(RuntimeContract, TimersRunInDoEventsUntilStopped) {
    auto& runtime = this->runtime;
    const int timer = runtime.startTimer(5, this->note("timer"));
    runtime.Sleep(6);
    EXPECT_TRUE(this->log.empty());
    runtime.DoEvents();
    EXPECT_EQ(this->log, Log{"timer"});
    runtime.Sleep(6);
    runtime.stopTimer(timer);
    runtime.Sleep(6);
    runtime.DoEvents();
    runtime.stopTimer(timer);
    EXPECT_EQ(this->log, Log{"timer"});
}

TYPED_TEST(RuntimeContract, TimerEndsAWaitForActivity) {
    this->runtime.startTimer(3, this->note("timer"));
    this->runtime.WaitActivity(3600 * 1000);  // the test's own limit ends it otherwise
    this->runtime.DoEvents();
    EXPECT_EQ(this->log, Log{"timer"});
}

TYPED_TEST(RuntimeContract, PostedHandlersRunInOrderAndCanBeForgotten) {
    auto& runtime = this->runtime;
    const int mine = 0;
    const int yours = 0;
    runtime.post(&mine, [&] {
        this->log.push_back("first");
        runtime.post(&mine, this->note("posted by the first"));
        runtime.post(&yours, this->note("forgotten"));
        runtime.forget(&yours);
    });
    runtime.post(&yours, this->note("forgotten"));
    EXPECT_TRUE(this->log.empty());
    runtime.DoEvents();
    EXPECT_EQ(this->log, (Log{"first", "posted by the first"}));
    runtime.post(&yours, this->note("forgotten"));
    runtime.post(&mine, this->note("kept"));
    runtime.forget(&yours);
    runtime.DoEvents();
    EXPECT_EQ(this->log.back(), "kept");
    EXPECT_EQ(this->log.size(), 3u);
}

TYPED_TEST(RuntimeContract, HandlersNeverRunInsideOneAnother) {
    auto& runtime = this->runtime;
    runtime.setPump(this->note("pump"));
    runtime.post(this, [&] {
        this->log.push_back("in");
        runtime.DoEvents();
        this->log.push_back("out");
    });
    runtime.post(this, this->note("next"));
    runtime.DoEvents();
    EXPECT_EQ(this->log, (Log{"in", "pump", "out", "next", "pump"}));
}

TYPED_TEST(RuntimeContract, HandlerThatThrowsStopsNothingElse) {
    auto& runtime = this->runtime;
    runtime.post(this, [] { throw std::runtime_error("handler"); });
    runtime.post(this, this->note("next"));
    EXPECT_THROW(runtime.DoEvents(), std::runtime_error);
    runtime.DoEvents();
    EXPECT_EQ(this->log, Log{"next"});
}

TYPED_TEST(RuntimeContract, HandlersThatKeepPostingDoNotHoldItUp) {
    std::function<void()> again = [&] { this->runtime.post(this, again); };
    again();
    this->runtime.DoEvents();
    this->runtime.forget(this);
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
    auto& runtime = this->runtime;
    Source source;
    runtime.add(source);
    runtime.Sleep(3);
    EXPECT_EQ(source.serviced, 0);
    runtime.DoEvents();
    EXPECT_EQ(source.serviced, 1);
    EXPECT_EQ(source.dispatched, 1);
    source.busy = true;
    runtime.Sleep(5);
    EXPECT_GE(source.serviced, 3);
    EXPECT_EQ(source.dispatched, 1);
    source.news = true;
    runtime.WaitActivity(3600 * 1000);
    runtime.remove(source);
    const int before = source.serviced;
    runtime.Sleep(2);
    runtime.DoEvents();
    EXPECT_EQ(source.serviced, before);
}

class Pipe {
public:
    Pipe() {
        if (pipe(ends_) < 0) throw std::runtime_error("no pipe");
    }
    ~Pipe() {
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int out() const { return ends_[0]; }
    void put() const { EXPECT_EQ(::write(ends_[1], "x", 1), 1); }
    void take() const {
        char c = 0;
        EXPECT_EQ(::read(ends_[0], &c, 1), 1);
    }

private:
    int ends_[2] = {-1, -1};
};

bool isReadable(int descriptor) {
    pollfd asked{descriptor, POLLIN, 0};
    return poll(&asked, 1, 0) == 1;
}

TEST(LinuxRuntime, DescriptorsMoveDataInsideWaits) {
    LinuxRuntime runtime;
    const Pipe pipe;
    int taken = 0;
    runtime.watch(pipe.out(), POLLIN, [&](std::uint32_t) {
        pipe.take();
        if (++taken % 50) pipe.put();
    });
    EXPECT_FALSE(isReadable(runtime.descriptor()));
    pipe.put();
    EXPECT_TRUE(isReadable(runtime.descriptor()));
    runtime.WaitActivity(3600 * 1000);
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

TEST(LinuxRuntime, HandlerMayStopItsOwnWatchAndAnother) {
    LinuxRuntime runtime;
    const Pipe a, b;
    int calls = 0;
    const auto stopBoth = [&](std::uint32_t) {
        ++calls;
        runtime.unwatch(a.out());
        runtime.unwatch(b.out());
    };
    runtime.watch(a.out(), POLLIN, stopBoth);
    runtime.watch(b.out(), POLLIN, stopBoth);
    a.put();
    b.put();
    runtime.DoEvents();
    runtime.DoEvents();
    EXPECT_EQ(calls, 1);
}

TEST(LinuxRuntime, NewsOfAClosedDescriptorIsNoNewsOfTheNextOneOfItsNumber) {
    LinuxRuntime runtime;
    const Pipe a, b, silent;
    int stale = 0;
    const auto replace = [&](const Pipe& mine, const Pipe& other) {
        return [&](std::uint32_t) {
            mine.take();
            runtime.unwatch(other.out());
            dup2(silent.out(), other.out());
            runtime.watch(other.out(), POLLIN, [&](std::uint32_t) { ++stale; });
        };
    };
    runtime.watch(a.out(), POLLIN, replace(a, b));
    runtime.watch(b.out(), POLLIN, replace(b, a));
    a.put();
    b.put();
    runtime.DoEvents();
    EXPECT_EQ(stale, 0);
}

TEST(FakeRuntime, CodeThatSpinsOrWaitsForEverFails) {
    fakes::FakeRuntime runtime;
    EXPECT_THROW(
        {
            while (true) runtime.DoEvents();
        },
        std::runtime_error);
    EXPECT_THROW(runtime.Sleep(2000000000), std::runtime_error);
}

}  // namespace
}  // namespace corvane
