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
    }
}

/// The step over 2^31 counts one millisecond less than it took, the step over 2^32 exactly what it took.
TEST(clsTimeout, CrossesBothEdgesOfTheCounter) {
    EXPECT_EQ(waited(0x7FFFFFFFu - 100, 1000), 1001);
    EXPECT_EQ(waited(0xFFFFFFFFu - 100, 1000), 1000);
}

}  // namespace
}  // namespace corvane
