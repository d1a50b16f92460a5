#include <gtest/gtest.h>

#include "image/ImageCheck.h"
#include "image/MemoryMap.h"
#include "site/SiteCheck.h"
#include "support/FakeDigest.h"
#include "support/ScratchFolder.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kSound[] =
    ":020000040000FA\n:0400000001020304F2\n:0400100005060708D2\n:020000040001F9\n:0400000001020304F2\n:00000001FF\n";

std::string found(const std::string& content, std::size_t most = 100) {
    return joined(findingLines(checkImage(content).findings, most), "; ");
}

TEST(ImageCheck, FindsNothingInASoundImage) {
    for (const std::string& content :
         {std::string(kSound), replaceAll(kSound, "\n", "\r\n"), "[INFO]\nPGM=x\n" + std::string(kSound),
          std::string(":0400000001020304F2\n:0400000500000020D7\n:00000001FF")}) {
        EXPECT_EQ(found(content), "");
    }
    const auto report = checkImage(kSound);
    EXPECT_EQ(report.records, 6U);
    EXPECT_EQ(report.bytes, 12U);
    ASSERT_EQ(report.segments.size(), 3U);
    EXPECT_EQ(segmentText(report.segments[1]), "0x00010 to 0x00013, 4 bytes");
    EXPECT_EQ(segmentText(report.segments[2]), "0x10000 to 0x10003, 4 bytes");
}

TEST(MemoryMap, OfAScatteredImageIsCutShort) {
    const fakes::ScratchFolder folder;
    std::string scattered;
    for (int i = 10; i < 50; ++i) scattered += ":01" + std::to_string(i) + "0000AA00\n";
    const auto words = memoryMapOf(folder.file("b.hex", scattered))->words();
    EXPECT_TRUE(words.starts_with("40 bytes in 40 segments: 0x01000 to 0x01000, 1 byte; a gap")) << words;
    EXPECT_TRUE(words.ends_with("; and more up to 0x04900.")) << words;
    EXPECT_FALSE(memoryMapOf(folder.file("c.hex", ":00000001FF\n")));
    EXPECT_FALSE(memoryMapOf(folder.at("none.hex")));
}

TEST(ImageCheck, FindsEachMistake) {
    const std::string data = ":0400000001020304F2\n", end = ":00000001FF\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "the file holds no data; the file has no end record"},
        {end, "the file holds no data"},
        {data, "the file has no end record"},
        {":0400000001020304F3\n" + end, "line 1 has a wrong checksum"},
        {"x\n" + data + ":04001000050607\n" + end, "line 3 is cut off: fewer bytes than its length says"},
        {data + ":0400100005060708D200\n" + end, "line 2 has more bytes than its length says"},
        {data + ":04001000050607zzD2\n:\n" + end,
         "line 2 holds a character that is no hexadecimal digit; line 3 is cut off: fewer bytes than its length says"},
        {data + ":0400040001020304EE\n:020002000506F1\n" + end, "line 3 writes to 0x00002 again, as line 1 did"},
        {":0400100005060708D2\n:04000E0001020304E4\n" + end, "line 2 writes to 0x00010 again, as line 1 did"},
        {data + data + end,
         "line 2 is a second record at address 0: the one in line 1 is never sent; line 2 writes to 0x00000 again, as "
         "line 1 did"},
        {data + ":020000021000EC\n" + end,
         "line 2 is an extended segment record: the record at address 0 is sent late, to another place"},
        {data + end + ":0400100005060708D2\n" + end,
         "line 3 stands behind the end record; line 4 is a second end record"},
        {data + ":0100000400FB\n:00000007F9\n" + end,
         "line 2 is an address record of a wrong length; line 3 has the unknown type 7"},
        {"\xEF\xBB\xBF" + data + " :0400100005060708D2\n" + data + end,
         "line 1 holds a record that does not begin the line, so it is never sent; "
         "line 2 holds a record that does not begin the line, so it is never sent"},
        {":04FFFE0001020304F5\n" + end, "line 1 runs past the end of its 64 KiB segment"},
    };
    for (const auto& [content, wanted] : cases) EXPECT_EQ(found(content), wanted) << content;
    EXPECT_EQ(found(data + ":\n:\n:\n" + end, 2),
              "line 2 is cut off: fewer bytes than its length says; line 3 is cut off: fewer bytes than its length "
              "says; and 1 more");
}

class Site : public ::testing::Test {
protected:
    std::string findings(const std::string& inf) {
        SiteCheck check(digest, [this](const std::string& path) -> std::optional<std::string> {
            const auto content = fakes::ScratchFolder::content(folder.at("site" + path));
            return content == "(none)" ? std::nullopt : std::optional(content);
        });
        report = check.check(folder.file("firmware.inf", inf));
        std::string all;
        for (const auto& finding : report.findings) all += "[" + finding.section + "] " + finding.text + "\n";
        return all;
    }

    fakes::FakeDigest digest;
    fakes::ScratchFolder folder;
    SiteReport report;
};

TEST_F(Site, FindsNothingInAGoodOne) {
    folder.file("site/f/a.hex", kSound);
    folder.file("site/n.txt", "notes");
    EXPECT_EQ(
        findings("[Corvane]\nVersion=V0.9R1\n[PGM_A]\nPRODUCT=P\nVERSION=V5.1R2\nDESC=x; "
                 "y\nFILE=/f/a.hex\nISP_BAUDRATE=57600\n"
                 "LinkDOC1=Notes\nLinkURL1=n.txt\n[pgm_b]\nproduct=P\nversion=V5.2R1\ndesc=z\nfile=f/a.hex\n[End]\n"),
        "");
    EXPECT_EQ(report.offered.size(), 2U);
}

TEST_F(Site, FindsEachPlantedMistake) {
    folder.file("site/f/a.hex", kSound);
    folder.file("site/f/bad.hex", ":0400000001020304F3\n");
    folder.file("site/f/empty.hex", "");
    const std::string ok = "PRODUCT=P\nVERSION=V1.1\nDESC=d\nFILE=/f/a.hex\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "[] offers no image at all\n"},
        {"[PGM_A]\nPRODUCT=P\nVERSION=V1.1\n[PGM_B]\nDESC=d\nFILE=/f/a.hex\n[End]\n",
         "[PGM_A] is not offered: DESC, FILE missing\n"
         "[PGM_B] takes PRODUCT, VERSION from an incomplete section before it\n"
         "[PGM_B] PRODUCT is \"P\" in the list and \"\" when the image is chosen\n"
         "[PGM_B] VERSION is \"V1.1\" in the list and \"\" when the image is chosen\n"
         "[PGM_B] has no product: choosing it ends with \"No new version in server!!\"\n"},
        {"[PGM_A]\nPRODUCT=\"P\"\nVERSION=V1.1\nVERSION=V1.2\nDESC=d\nFILE=/f/a.hex\n",
         "[PGM_A] PRODUCT is \"\"P\"\" in the list and \"P\" when the image is chosen\n"
         "[PGM_A] VERSION is \"V1.2\" in the list and \"V1.1\" when the image is chosen\n"},
        {"[PGM_A]\n" + ok + "[PGM_B] ; new\n" + ok,
         "[PGM_B] is not offered: its head \"[PGM_B] ; new\" does not end with ]\n"},
        {"[PGM_A]\n" + ok + "[PGM_A]\n" + ok, "[PGM_A] occurs twice: the details come from the first one\n"},
        {"[PGM A]\n" + ok, "[PGM A] has a blank in its name: choosing it ends with \"No new version in server!!\"\n"},
        {"[PGM_A]\n" + ok + "ISP_BAUDRATE=fast\nLinkDOC2=x\nLinkDOC3=y\nLinkURL3=/gone\n",
         "[PGM_A] ISP_BAUDRATE is \"fast\", which is no number\n"
         "[PGM_A] has only one of LinkDOC2 and LinkURL2\n"
         "[PGM_A] LinkURL3 \"/gone\" is not on the site\n"},
        {"[PGM_A]\nPRODUCT=P\nVERSION=5.1\nDESC=\nFILE=/f/gone.hex\nISP_BAUDRATE=-5\n",
         "[PGM_A] has the version \"5.1\", which counts as 0\n"
         "[PGM_A] ISP_BAUDRATE is \"-5\", which is no baud rate\n"
         "[PGM_A] FILE \"/f/gone.hex\" is not on the site\n"},
        {"[PGM_A]\nPRODUCT=P\nVERSION=V1\nDESC=\nFILE=/f/bad.hex\n[PGM_B]\nPRODUCT=Q\nVERSION=V1\nDESC=\nFILE=/f/"
         "empty.hex\n"
         "[PGM_C]\nPRODUCT=R\nVERSION=V1\nDESC=\nFILE=/f/..\n",
         "[PGM_A] FILE \"/f/bad.hex\": line 1 has a wrong checksum\n"
         "[PGM_A] FILE \"/f/bad.hex\": the file has no end record\n"
         "[PGM_B] FILE \"/f/empty.hex\" is empty, which counts as a failed download\n"
         "[PGM_C] FILE \"/f/..\" gives no usable file name\n"},
        {"[PGM_A]\n" + replaceAll(ok, "V1.1", "V5.10R1") + "[PGM_B]\n" + replaceAll(ok, "V1.1", "V5.9R1") +
             "[PGM_C]\n" + replaceAll(ok, "V1.1", "v5.9R01"),
         "[PGM_C] version \"v5.9R01\" counts as the same as \"V5.9R1\" of PGM_B\n"
         "[PGM_A] version \"V5.10R1\" is newer as a number, but not as a text, than \"v5.9R01\" of PGM_C\n"},
        {"[PGM_A]\n" + ok + "SHA256=" + digest.sha256(kSound) + "\n[PGM_B]\n" + ok + "SHA256=0\n",
         "[PGM_B] SHA256 does not match FILE, whose digest is " + digest.sha256(kSound) + "\n"},
        {"[Corvane]\nVersion=V0.10R\xE9\n[PGM_A]\n" + ok, ""},
        {"[Corvane]\nVersion=v0.1\n[PGM_A]\n" + ok,
         "[Corvane] Version \"v0.1\" is offered to V1.0R0, although it is no newer as a number\n"
         "[Corvane] File \"firmware/utility/corvane.exe\" is not on the site\n"},
        {std::string("[PGM_A]\n") + ok + std::string(1, '\0'), "[] holds NUL bytes: it is no text file\n"},
    };
    for (const auto& [inf, wanted] : cases) EXPECT_EQ(findings(inf), wanted) << inf;
}

}  // namespace
}  // namespace corvane
