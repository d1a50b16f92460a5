#include "text/Variant.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Variant, OnlyTextAndByteArraysHoldBytes) {
    EXPECT_EQ(bytesOf(Variant(std::string("a\0\xff", 3))), (Bytes{0x61, 0x00, 0xff}));
    EXPECT_EQ(textOf(Variant(Bytes{0x61, 0x00, 0xff})), std::string("a\0\xff", 3));
    EXPECT_EQ(bytesOf(Variant(Bytes{7})), Bytes{7});
    EXPECT_EQ(textOf(Variant(std::string("t"))), "t");
    for (const Variant& other :
         {Variant(), Variant(std::uint8_t{65}), Variant(std::int16_t{65}), Variant(std::int32_t{65})}) {
        EXPECT_TRUE(bytesOf(other).empty());
        EXPECT_EQ(textOf(other), "");
    }
}

}  // namespace
}  // namespace corvane
