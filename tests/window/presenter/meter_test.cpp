#include <gtest/gtest.h>

#include "window/presenter/ProgressMeter.h"

namespace corvane::tests {

TEST(Meter, CountsRecordsCalmly) {
    ProgressMeter meter;
    std::uint32_t tick = 0xFFFFFF00;  // wraps on the way
    meter.begin(false, tick);
    meter.phase(RunPhase::program, tick);
    meter.records(1000);
    EXPECT_EQ(meter.text(), "Programming");
    meter.progress(0, 50000, tick);
    std::optional<int> last;
    for (int i = 1; i <= 1000; ++i) {
        tick += i % 2 ? 15 : 25;  // 50 a second
        meter.progress(i * 40, 50000, tick);
        if (last) EXPECT_LE(*meter.remaining(), *last) << i;
        last = meter.remaining();
        if (i == 100) EXPECT_EQ(*meter.remaining(), 20);
        if (i != 500) continue;
        EXPECT_EQ(meter.text(), "Programming: 500 of 1000 records, 50 a second, 10 s left");
        meter.permille(tick);
        EXPECT_EQ(meter.title(), "59 % Programming");
    }
    meter.progress(0, 0, tick);
    meter.phase(RunPhase::reset, tick);
    EXPECT_EQ(meter.text(), "Restarting the device");
    meter.phase(RunPhase::idle, tick);
    EXPECT_EQ(meter.text() + meter.title(), "");
}

TEST(Meter, CountsTheBytesOfATransfer) {
    ProgressMeter meter;
    meter.phase(RunPhase::image, 0);
    meter.progress(0, 100, 0);
    for (int ms = 100; ms <= 1000; ms += 100) meter.transfer(ms * 2000, 4000000, static_cast<std::uint32_t>(ms));
    meter.progress(50, 100, 1000);
    EXPECT_EQ(meter.text(), "Fetching the image: 2000 kB of 4000 kB, 2000 kB a second");
}

TEST(Meter, NeverFallsAndIsFullOnlyAtSuccess) {
    ProgressMeter meter;
    std::uint32_t tick = 0;
    std::vector<int> seen;
    const auto after = [&](std::uint32_t ms) {
        tick += ms;
        seen.push_back(meter.permille(tick) / 10);
    };
    meter.begin(false, tick);
    for (const auto phase : {RunPhase::scan, RunPhase::selection, RunPhase::bootLoader, RunPhase::erase}) {
        meter.phase(phase, tick);
        after(10000);
        after(10000);
    }
    for (int tries = 0; tries < 2; ++tries) {  // a second try starts its records anew
        meter.phase(RunPhase::program, tick);
        meter.records(4);
        for (int i = 1; i <= 3; ++i) meter.progress(i, 4, tick);
        after(0);
    }
    meter.phase(RunPhase::proof, tick);
    after(1000000);
    meter.phase(RunPhase::idle, tick);
    meter.end(true);
    after(0);
    EXPECT_EQ(seen, (std::vector<int>{7, 9, 14, 14, 18, 18, 26, 27, 75, 75, 99, 100}));
    meter.end(false);
    EXPECT_EQ(meter.permille(tick), 0);
}

}  // namespace corvane::tests
