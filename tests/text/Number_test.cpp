#include "text/Number.h"

#include <gtest/gtest.h>

#include "text/RuntimeError.h"

namespace corvane {
namespace {

TEST(Number, LeadingNumberOfAText) {
    const std::pair<const char*, double> cases[] = {
        {"", 0},   {"57600N", 57600}, {"  19200 ", 19200}, {"\t7", 7}, {"-3.5x", -3.5}, {"+8", 8}, {".5", 0.5},
        {"5.", 5}, {"1.5.2", 1.5},    {"1e3", 1},          {"- 5", 0}, {"0x1F", 0},     {"1,5", 1}};
    for (const auto& [text, value] : cases) EXPECT_EQ(leadingNumber(text), value) << text;
}

TEST(Number, WholeTextIsANumber) {
    for (const char* text : {"3", " 3 ", "-3", "+3.25", ".5", "5.", "\t7"}) EXPECT_TRUE(isNumeric(text)) << text;
    for (const char* text : {"", "COM3", "3x", "3 4", "1.2.3", "-", ".", "1e3"}) EXPECT_FALSE(isNumeric(text)) << text;
}

TEST(Number, HalvesGoToTheEvenNeighbour) {
    EXPECT_EQ((std::vector{toLong(0.5), toLong(1.5), toLong(2.5), toLong(-1.5), toLong(2.51)}),
              (std::vector<std::int32_t>{0, 2, 2, -2, 3}));
}

TEST(Number, WhatDoesNotFitOverflows) {
    EXPECT_EQ(toInteger(32767.4), 32767);
    EXPECT_EQ(toInteger(-32768), -32768);
    EXPECT_EQ(toLong(2147483647), 2147483647);
    for (const double value : {32767.5, -32769.0, 1e300}) EXPECT_THROW(toInteger(value), RuntimeError) << value;
    EXPECT_THROW(toLong(2147483648.0), RuntimeError);
}

TEST(Number, HexadecimalDigitsOnly) {
    EXPECT_EQ(hexNumber("0aF"), 0xAFu);
    EXPECT_EQ(hexNumber("FFFFFFFF"), 0xFFFFFFFFu);
    for (const char* text : {"", " 1", "1 ", "-1", "0x1", "123456789"}) EXPECT_FALSE(hexNumber(text)) << text;
}

}  // namespace
}  // namespace corvane
