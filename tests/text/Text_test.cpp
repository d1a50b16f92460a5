#include "text/Text.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "text/RuntimeError.h"

namespace corvane {
namespace {

TEST(Text, TrimsBlanksAndTheMarkOfAnEditor) {
    EXPECT_EQ(trimmed(" \t a b\t "), "a b");
    EXPECT_EQ(trimmed("\ra\n"), "\ra\n");
    EXPECT_EQ(withoutUtf8Mark("\xef\xbb\xbf[a]"), "[a]");
    EXPECT_EQ(withoutUtf8Mark("\xef\xbb["), "\xef\xbb[");
}

TEST(Text, FoldsOnlyTheLettersAToZ) {
    EXPECT_EQ(upperCase("aZ\xe4{`@"), "AZ\xe4{`@");
    EXPECT_TRUE(equalsNoCase("PGM_x", "pgm_X") && startsWithNoCase("Pgm_1", "PGM"));
    EXPECT_FALSE(equalsNoCase("PGM", "PGM_") || equalsNoCase("\xe4", "\xc4") || equalsNoCase("[", "{"));
    EXPECT_FALSE(startsWithNoCase("PG", "PGM"));
}

TEST(Text, FindsWithoutRegardToCase) {
    EXPECT_EQ(findNoCase("TARN-R200 V5", "r200"), 5u);
    EXPECT_EQ(findNoCase("abAB", "AB", 1), 2u);
    EXPECT_EQ(findNoCase("ab", "abc"), std::string_view::npos);
    EXPECT_EQ(findNoCase("ab", "a", 3), std::string_view::npos);
    EXPECT_TRUE(containsNoCase("", "") && !containsNoCase("", "a"));
}

TEST(Text, SplitsJoinsAndReplaces) {
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(split("a,,b,", ','), (Pieces{"a", "", "b", ""}));
    EXPECT_EQ(split("", ','), Pieces{""});
    EXPECT_EQ(joined({"a", "", "b"}, ", "), "a, , b");
    EXPECT_EQ(replaceAll("a\\nb\\n", "\\n", "\r\n"), "a\r\nb\r\n");
    EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
}

TEST(Text, AnyLineEndEndsALine) {
    const auto lines = [](std::string_view text) {
        std::string all;
        std::string_view line;
        for (Lines reader(text); reader.next(line);) all += std::string(line) + "|";
        return all;
    };
    EXPECT_EQ(lines("a\nb\r\nc\n\n\r\rd"), "a|b|c||||d|");
    EXPECT_EQ(lines(std::string_view("\n\ra\0b\r\n", 7)), std::string("||a\0b|", 6));
    EXPECT_EQ(lines(""), "");
}

TEST(Text, ReadsWholeFilesOnly) {
    const auto path = (std::filesystem::temp_directory_path() / "corvane-text-test").string();
    std::ofstream(path, std::ios::binary) << std::string("a\r\n\0\xff", 5);
    EXPECT_EQ(readFile(path), std::string("a\r\n\0\xff", 5));
    std::filesystem::remove(path);
    for (const auto& none : {path, std::filesystem::temp_directory_path().string(), std::string("/proc/self/mem")}) {
        EXPECT_THROW(readFile(none), RuntimeError) << none;
    }
}

}  // namespace
}  // namespace corvane
