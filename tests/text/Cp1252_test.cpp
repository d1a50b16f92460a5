#include "text/Cp1252.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Cp1252, EveryByteSurvivesTheWayThereAndBack) {
    for (int code = 0; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(fromUtf8(toUtf8(byte)), byte) << code;
    }
}

TEST(Cp1252, ShowsWhatWindowsShows) {
    EXPECT_EQ(toUtf8("gr\xf6\xdf\x65r \x80 5"), "gr\xc3\xb6\xc3\x9f\x65r \xe2\x82\xac 5");
    EXPECT_EQ(toUtf8("\x93\x94\x99\x9f\x81"), "\xe2\x80\x9c\xe2\x80\x9d\xe2\x84\xa2\xc5\xb8\xc2\x81");
}

TEST(Cp1252, WhatItDoesNotHaveIsAQuestionMark) {
    const std::pair<const char*, const char*> cases[] = {
        {"\xe4\xbd\xa0!", "?!"},
        {"\xf0\x9f\x98\x80!", "?!"},        // beyond 16 bits
        {"\xc2\x80", "?"},                  // the code 0x80 is the euro sign
        {"\xc3(", "?("},                    // cut short by another character
        {"\xe2\x82", "??"},                 // cut short by the end
        {"\xc0\xaf\xe0\x80\xaf", "?????"},  // a separator in disguise
        {"\xed\xa0\x80", "???"},            // half of a pair
        {"\xf4\x90\x80\x80", "????"},       // beyond the last character
    };
    for (const auto& [utf8, text] : cases) EXPECT_EQ(fromUtf8(utf8), text);
}

}  // namespace
}  // namespace corvane
