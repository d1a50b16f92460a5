#include "text/Profile.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Profile, FindsTheFirstOfEachName) {
    const Profile original(
        "\xef\xbb\xbf[INFO] ; head\r\nVER=outside; kept\r\n;VER=comment\r\n ver = second \r\n"
        "Empty =\r\nQuoted=\" a; b \"\r\nSingle='x'\r\nHalf=\"x'\r\nOne=\"\rMac=yes\rno equals\n"
        "  [PGM_A]\nFile=/a=b.hex\n[info]\nLate=1\n[PGM_A]\nLate=2\n[broken\nKey=3\n"
        "[Long]\nText=" +
        std::string(2000, 't'));
    const Profile profile = original;
    const std::tuple<const char*, const char*, std::string> cases[] = {{"info", "VER", "outside; kept"},
                                                                       {"INFO", ";VER", ""},
                                                                       {"INFO", "Empty", ""},
                                                                       {"INFO", "Quoted", " a; b "},
                                                                       {"INFO", "Single", "x"},
                                                                       {"INFO", "Half", "\"x'"},
                                                                       {"INFO", "One", "\""},
                                                                       {"INFO", "Mac", "yes"},
                                                                       {"PGM_A", "File", "/a=b.hex"},
                                                                       {"INFO", "Late", ""},
                                                                       {"PGM_A", "Late", ""},
                                                                       {"broken", "Key", ""},
                                                                       {"PGM_A", "Key", ""},
                                                                       {"Long", "text", std::string(1023, 't')}};
    for (const auto& [section, key, value] : cases) EXPECT_EQ(profile.value(section, key), value) << section << key;
}

}  // namespace
}  // namespace corvane
