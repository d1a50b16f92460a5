#include <gtest/gtest.h>

#include "window/presenter/ProgressMeter.h"

namespace corvane {
namespace {

TEST(Meter, CountsRecordsCalmly) {
    ProgressMeter meter;
    std::uint32_t tick = 0xFFFFFF00;  // wraps on the way
    meter.phase(RunPhase::program, tick);
    meter.records(1000);
    EXPECT_EQ(meter.text(), "Programming");
    meter.progress(0, 50000, tick);
    std::optional<int> last;
    for (int i = 1; i <= 1000; ++i) {
        tick += i % 2 ? 15 : 25;  // 50 a second
        meter.progress(i * 40, 50000, tick);
        if (last) {
            EXPECT_LE(*meter.remaining(), *last) << i;
        }
        last = meter.remaining();
        if (i == 500) {
            EXPECT_EQ(meter.text(), "Programming: 50 %, 500 of 1000 records, 50 a second, 10 s left");
            EXPECT_EQ(meter.title(), "50 % Programming");
        }
        if (i == 100) {
            EXPECT_EQ(*meter.remaining(), 20);
        }
    }
    EXPECT_EQ(meter.percent(), 100);
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
    EXPECT_EQ(meter.title(), "50 % Fetching the image");
    EXPECT_FALSE(meter.isUnmeasured());
    meter.transfer(2100000, 0, 1050);
    EXPECT_TRUE(meter.isUnmeasured()) << "the server does not tell the size";
    meter.phase(RunPhase::erase, 1100);
    EXPECT_TRUE(meter.isUnmeasured());
    meter.phase(RunPhase::program, 1200);
    EXPECT_FALSE(meter.isUnmeasured());
}

}  // namespace
}  // namespace corvane
