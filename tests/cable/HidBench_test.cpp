#include "cable/HidBench.h"

#include <gtest/gtest.h>

namespace corvane::hidbench {
namespace {

TEST(HidBenchList, KeepsAReaderWhateverItsTextsHold) {
    const auto text =
        listText({{"bench:1", 0x1209, 5, "Cor\tvane", "Kes\rtrel", "K\r\n1"}, {"bench:2", 1, 2, "", "", ""}});
    EXPECT_EQ(text, "bench:1\t1209\t0005\tCor vane\tKes trel\tK  1\nbench:2\t0001\t0002\t\t\t\n");
    EXPECT_EQ(listOf(text).size(), 2U);
    EXPECT_EQ(listOf("\n").size(), 0U) << "an empty list";
}

}  // namespace
}  // namespace corvane::hidbench
