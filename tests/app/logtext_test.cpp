#include "app/LogText.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(LogText, DropsItsFirst255CharactersOnceItIsLongerThan16384) {
    LogText log;
    EXPECT_FALSE(log.append(std::string(255, 'a') + std::string(16129, 'b')));  // 16384 in all
    EXPECT_FALSE(log.append("c\r\n"));
    EXPECT_EQ(log.text().size(), 16387u);
    EXPECT_TRUE(log.append("Erase"));
    EXPECT_EQ(log.text().size(), 16137u);
    EXPECT_EQ(log.text().substr(0, 2), "bb");
    EXPECT_EQ(log.text().substr(16129), "c\r\nErase");
    EXPECT_FALSE(log.append(std::string(20000, 'd')));  // how much is added does not matter
    EXPECT_EQ(log.text().size(), 36137u);
    log.clear();
    EXPECT_EQ(log.text(), "");
}

}  // namespace
}  // namespace corvane
