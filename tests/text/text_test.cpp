#include "text/Text.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "text/Cp1252.h"
#include "text/IntelHex.h"
#include "text/Json.h"
#include "text/Number.h"
#include "text/Profile.h"
#include "text/RuntimeError.h"

namespace corvane::tests {

using Pairs = std::vector<std::pair<std::string, std::string>>;

TEST(Cp1252, GoesThereAndBack) {
    for (int code = 0; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(fromUtf8(toUtf8(byte)), byte) << code;
    }
    EXPECT_EQ(toUtf8("gr\xf6\xdf\x65r \x80 5"), "gr\xc3\xb6\xc3\x9f\x65r \xe2\x82\xac 5");
    EXPECT_EQ(toUtf8("\x93\x94\x99\x9f\x81"), "\xe2\x80\x9c\xe2\x80\x9d\xe2\x84\xa2\xc5\xb8\xc2\x81");
    const Pairs cases = {
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

TEST(IntelHex, TakesALineApart) {
    const auto record = parseHexRecord(":0300300402337a1a");
    ASSERT_TRUE(record && record->checksumRight);
    EXPECT_EQ(record->address * 16 + record->type, 0x304);
    EXPECT_EQ(record->data, (Bytes{0x02, 0x33, 0x7A}));
}

TEST(Json, CanBeReadWhateverTheTextHolds) {
    const Pairs cases = {
        {"", ""},
        {"a\"b\\c/", "a\\\"b\\\\c/"},
        {std::string("\n\r\t\0\x1b\x7f\xc2\x9d", 8), "\\n\\u000D\\u0009\\u0000\\u001B\\u007F\\u009D"},
        {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
        {"im\xe9.hex\xff\xc3", "im\xef\xbf\xbd.hex\xef\xbf\xbd\xef\xbf\xbd"},
    };
    for (const auto& [text, json] : cases) EXPECT_EQ(jsonString(text), "\"" + json + "\"");
}

TEST(Number, IsRead) {
    const std::pair<const char*, double> cases[] = {
        {"", 0},   {"57600N", 57600}, {"  19200 ", 19200}, {"\t7", 7}, {"-3.5x", -3.5}, {"+8", 8}, {".5", 0.5},
        {"5.", 5}, {"1.5.2", 1.5},    {"1e3", 1},          {"- 5", 0}, {"0x1F", 0},     {"1,5", 1}};
    for (const auto& [text, value] : cases) EXPECT_EQ(leadingNumber(text), value) << text;
    for (const char* text : {"3", " 3 ", "-3", "+3.25", ".5", "5.", "\t7"}) EXPECT_TRUE(isNumeric(text)) << text;
    for (const char* text : {"", "COM3", "3x", "3 4", "1.2.3", "-", ".", "1e3"}) EXPECT_FALSE(isNumeric(text)) << text;
    EXPECT_EQ(hexNumber("0aF"), 0xAFu);
    EXPECT_EQ(hexNumber("FFFFFFFF"), 0xFFFFFFFFu);
    for (const char* text : {"", " 1", "1 ", "-1", "0x1", "123456789"}) EXPECT_FALSE(hexNumber(text)) << text;
}

TEST(Number, IsRoundedToEvenAndMustFit) {
    EXPECT_EQ((std::vector{toLong(0.5), toLong(1.5), toLong(2.5), toLong(-1.5), toLong(2.51), toLong(2147483647)}),
              (std::vector<std::int32_t>{0, 2, 2, -2, 3, 2147483647}));
    EXPECT_EQ(toInteger(32767.4) - toInteger(-32768), 65535);
    for (const double value : {32767.5, -32769.0, 1e300}) EXPECT_THROW(toInteger(value), RuntimeError) << value;
    EXPECT_THROW(toLong(2147483648.0), RuntimeError);
}

TEST(Profile, FindsTheFirstOfEachName) {
    const Profile original(
        "\xef\xbb\xbf[INFO] ; head\r\nVER=outside; kept\r\n;VER=comment\r\n ver = second \r\n"
        "Empty =\r\nQuoted=\" a; b \"\r\nSingle='x'\r\nHalf=\"x'\r\nOne=\"\rMac=yes\rno equals\n"
        "  [PGM_A]\nFile=/a=b.hex\n[info]\nLate=1\n[PGM_A]\nLate=2\n[broken\nKey=3\n"
        "[Long]\nText=" +
        std::string(2000, 't'));
    const Profile profile = original;
    const Pairs cases = {{"VER", "outside; kept"}, {";VER", ""},  {"Empty", ""},  {"Quoted", " a; b "}, {"Single", "x"},
                         {"Half", "\"x'"},         {"One", "\""}, {"Mac", "yes"}, {"Late", ""}};
    for (const auto& [key, value] : cases) EXPECT_EQ(profile.value("INFO", key), value) << key;
    EXPECT_EQ(profile.value("info", "ver") + profile.value("PGM_A", "File"), "outside; kept/a=b.hex");
    EXPECT_EQ(profile.value("PGM_A", "Late") + profile.value("broken", "Key") + profile.value("PGM_A", "Key"), "");
    EXPECT_EQ(profile.value("Long", "text"), std::string(1023, 't'));
}

TEST(Text, IsComparedWithoutRegardToTheCaseOfAToZ) {
    EXPECT_EQ(upperCase("aZ\xe4{`@"), "AZ\xe4{`@");
    EXPECT_TRUE(equalsNoCase("PGM_x", "pgm_X") && startsWithNoCase("Pgm_1", "PGM"));
    EXPECT_FALSE(equalsNoCase("PGM", "PGM_") || equalsNoCase("\xe4", "\xc4") || equalsNoCase("[", "{"));
    EXPECT_FALSE(startsWithNoCase("PG", "PGM"));
    EXPECT_EQ(findNoCase("TARN-R200 V5", "r200"), 5u);
    EXPECT_EQ(findNoCase("abAB", "AB", 1), 2u);
    EXPECT_EQ(findNoCase("ab", "abc"), std::string_view::npos);
    EXPECT_EQ(findNoCase("ab", "a", 3), std::string_view::npos);
    EXPECT_TRUE(containsNoCase("", "") && !containsNoCase("", "a"));
}

TEST(Text, IsTrimmedSplitJoinedAndReplaced) {
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(trimmed(" \t a b\t "), "a b");
    EXPECT_EQ(trimmed("\ra\n"), "\ra\n");
    EXPECT_EQ(withoutUtf8Mark("\xef\xbb\xbf[a]"), "[a]");
    EXPECT_EQ(withoutUtf8Mark("\xef\xbb["), "\xef\xbb[");
    EXPECT_EQ(split("a,,b,", ','), (Pieces{"a", "", "b", ""}));
    EXPECT_EQ(split("", ','), Pieces{""});
    EXPECT_EQ(joined({"a", "", "b"}, ", "), "a, , b");
    EXPECT_EQ(replaceAll("a\\nb\\n", "\\n", "\r\n"), "a\r\nb\r\n");
    EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
    const Pairs texts = {
        {"a\nb\r\nc\n\n\r\rd", "a|b|c||||d|"}, {std::string("\n\ra\0b\r\n", 7), std::string("||a\0b|", 6)}, {"", ""}};
    for (const auto& [text, lines] : texts) {
        std::string all;
        std::string_view line;
        for (Lines reader(text); reader.next(line);) all += std::string(line) + "|";
        EXPECT_EQ(all, lines);
    }
}

TEST(Text, IsReadFromWholeFilesOnly) {
    const auto path = (std::filesystem::temp_directory_path() / "corvane-text-test").string();
    std::ofstream(path, std::ios::binary) << std::string("a\r\n\0\xff", 5);
    EXPECT_EQ(readFile(path), std::string("a\r\n\0\xff", 5));
    std::filesystem::remove(path);
    for (const auto& none : {path, std::filesystem::temp_directory_path().string(), std::string("/proc/self/mem")}) {
        EXPECT_THROW(readFile(none), RuntimeError) << none;
    }
}

}  // namespace corvane::tests
