#include "platform/clsTimeout.h"

#include <gtest/gtest.h>

#include "support/FakeRuntime.h"

namespace corvane {
namespace {

using fakes::FakeRuntime;

/// Milliseconds that a waiting loop of the given period takes when the tick counter starts at that value.
std::int64_t waited(std::uint32_t tickAtStart, std::int32_t period) {
    FakeRuntime runtime;
    runtime.tickAtStart(tickAtStart);
    clsTimeout timeout(runtime);
    timeout.Timeout(period);
    while (!timeout.WaitTimeout()) continue;
    return runtime.ms();
}

TEST(clsTimeout, LastsItsPeriodWhereverTheCounterStands) {
    for (const std::uint32_t start : {0u, 1000u, 0x7FFFFFFFu - 5000, 0x80000000u, 0xFFFFFFFFu - 5000}) {
        EXPECT_EQ(waited(start, 1000), 1000) << start;
        EXPECT_EQ(waited(start, 1), 1) << start;
        EXPECT_EQ(waited(start, 0), 1) << start;
    }
}

/// The step over 2^31 counts one millisecond less than it took, the step over 2^32 exactly what it took.
TEST(clsTimeout, CrossesBothEdgesOfTheCounter) {
    EXPECT_EQ(waited(0x7FFFFFFFu - 100, 1000), 1001);
    EXPECT_EQ(waited(0xFFFFFFFFu - 100, 1000), 1000);
}

/// Elapsed time between two single checks, so far as a period tells it.
bool isOverAfter(std::uint32_t from, int ms, std::int32_t period) {
    FakeRuntime runtime;
    runtime.tickAtStart(from);
    clsTimeout timeout(runtime);
    timeout.Timeout(period);
    runtime.Sleep(ms);
    return timeout.IsTimeout();
}

TEST(clsTimeout, OneGapOnBothSidesOfThePeriod) {
    const struct {
        std::uint32_t from;
        int ms;
        std::int32_t counted;
    } cases[] = {
        {5, 300, 300},          {0x7FFFFFFF, 300, 299}, {0x7FFFFF00, 300, 299}, {0x80000000, 300, 300},
        {0xFFFFFFFF, 300, 300}, {0xFFFFFF00, 300, 300}, {0x7FFFFFFF, 1, 0},     {0xFFFFFFFF, 1, 1},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(isOverAfter(c.from, c.ms, c.counted)) << std::hex << c.from;
        EXPECT_FALSE(isOverAfter(c.from, c.ms, c.counted + 1)) << std::hex << c.from;
    }
}

TEST(clsTimeout, FreshOneIsOverUntilItIsStarted) {
    FakeRuntime runtime;
    clsTimeout timeout(runtime);
    EXPECT_EQ(timeout.Timeout(), 1000);
    EXPECT_TRUE(timeout.IsTimeout());
    timeout.Reset();
    EXPECT_FALSE(timeout.IsTimeout());
    timeout.Timeout(0);
    EXPECT_TRUE(timeout.IsTimeout());
}

TEST(clsTimeout, ChargesOnlyTheTimeBetweenTwoChecks) {
    FakeRuntime runtime;
    clsTimeout timeout(runtime);
    timeout.Timeout(100);
    runtime.Sleep(60);
    EXPECT_FALSE(timeout.IsTimeout());
    EXPECT_FALSE(timeout.IsTimeout());
    runtime.Sleep(39);
    EXPECT_FALSE(timeout.IsTimeout());
    runtime.Sleep(1);
    EXPECT_TRUE(timeout.IsTimeout());
    timeout.Reset();
    runtime.Sleep(99);
    EXPECT_FALSE(timeout.IsTimeout());
}

TEST(clsTimeout, LetsEventsRunEvery200Milliseconds) {
    FakeRuntime runtime;
    clsTimeout timeout(runtime);
    timeout.Timeout(10000);
    std::vector<std::int64_t> moments;
    runtime.setPump([&] { moments.push_back(runtime.ms()); });
    while (runtime.ms() < 450) timeout.WaitTimeout();
    EXPECT_EQ(moments, (std::vector<std::int64_t>{200, 400}));
    runtime.Sleep(200);  // one gap of 200 ms counts at once
    timeout.WaitTimeout();
    EXPECT_EQ(moments.back(), 651);
}

TEST(clsTimeout, TimeOfTheOperatorIsChargedOrNot) {
    for (const bool isFree : {false, true}) {
        FakeRuntime runtime;
        clsTimeout timeout(runtime);
        timeout.Timeout(1000);
        bool once = true;
        runtime.setPump([&] {
            if (once) runtime.Sleep(500);
            once = false;
        });
        while (!timeout.WaitTimeout(isFree)) continue;
        EXPECT_EQ(runtime.ms(), isFree ? 1500 : 1000);
    }
}

}  // namespace
}  // namespace corvane
