#include "text/Json.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(JsonString, CanBeReadWhateverTheTextHolds) {
    const struct {
        std::string text, json;
    } cases[] = {
        {"", "\"\""},
        {"a\"b\\c/", "\"a\\\"b\\\\c/\""},
        {std::string("\n\r\t\0\x1b\x7f\xc2\x9d", 8), "\"\\n\\u000D\\u0009\\u0000\\u001B\\u007F\\u009D\""},
        {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\""},
        {"im\xe9.hex\xff\xc3", "\"im\xef\xbf\xbd.hex\xef\xbf\xbd\xef\xbf\xbd\""},
    };
    for (const auto& one : cases) EXPECT_EQ(jsonString(one.text), one.json);
}

}  // namespace
}  // namespace corvane
