#include "platform/clsTimeout.h"

#include <gtest/gtest.h>

#include "support/FakeRuntime.h"

namespace corvane::tests {

struct Timed {
    Timed(std::uint32_t tickAtStart, std::int32_t period) {
        runtime.tickAtStart(tickAtStart);
        timeout.Timeout(period);
    }

    fakes::FakeRuntime runtime;
    clsTimeout timeout{runtime};
};

/// The step over 2^31 counts one millisecond less than it took, the step over 2^32 exactly what it took.
TEST(clsTimeout, LastsItsPeriodWhereverTheCounterStands) {
    const std::tuple<std::uint32_t, std::int32_t, std::int64_t> waits[] = {
        {0, 0, 1}, {0x7FFFFFFFu - 5000, 1000, 1000}, {0x7FFFFFFFu - 100, 1000, 1001}, {0xFFFFFFFFu - 100, 1000, 1000}};
    for (const auto& [from, period, ms] : waits) {
        Timed t(from, period);
        while (!t.timeout.WaitTimeout()) continue;
        EXPECT_EQ(t.runtime.ms(), ms) << from << " " << period;
    }
    for (const auto& [from, counted] : {std::pair(0x7FFFFF00u, 299), {0xFFFFFF00u, 300}}) {
        for (const std::int32_t more : {0, 1}) {
            Timed t(from, counted + more);
            t.runtime.Sleep(300);
            EXPECT_EQ(t.timeout.IsTimeout(), more == 0) << std::hex << from;
        }
    }
}

TEST(clsTimeout, ChargesOnlyTheTimeBetweenTwoChecks) {
    fakes::FakeRuntime runtime;
    clsTimeout timeout(runtime);
    EXPECT_EQ(timeout.Timeout(), 1000);
    EXPECT_TRUE(timeout.IsTimeout()) << "a fresh one is over until it is started";
    timeout.Timeout(100);
    for (const auto& [ms, isOver] : {std::pair(60, false), {0, false}, {39, false}, {1, true}}) {
        runtime.Sleep(ms);
        EXPECT_EQ(timeout.IsTimeout(), isOver) << ms;
    }
    timeout.Reset();
    runtime.Sleep(99);
    EXPECT_FALSE(timeout.IsTimeout());
}

TEST(clsTimeout, LetsEventsRunEvery200Milliseconds) {
    Timed t(0, 10000);
    std::vector<std::int64_t> moments;
    t.runtime.setPump([&] { moments.push_back(t.runtime.ms()); });
    while (t.runtime.ms() < 450) t.timeout.WaitTimeout();
    EXPECT_EQ(moments, (std::vector<std::int64_t>{200, 400}));
    t.runtime.Sleep(200);  // one gap of 200 ms counts at once
    t.timeout.WaitTimeout();
    EXPECT_EQ(moments.back(), 651);
}

TEST(clsTimeout, TimeOfTheOperatorIsChargedOrNot) {
    for (const bool isFree : {false, true}) {
        Timed t(0, 1000);
        bool once = true;
        t.runtime.setPump([&] {
            if (once) t.runtime.Sleep(500);
            once = false;
        });
        while (!t.timeout.WaitTimeout(isFree)) continue;
        EXPECT_EQ(t.runtime.ms(), isFree ? 1500 : 1000);
    }
}

}  // namespace corvane::tests
