#include <gtest/gtest.h>

#include "site/SiteCheck.h"
#include "support/FakeSystem.h"
#include "support/ScratchFolder.h"
#include "text/Text.h"

namespace corvane::tests {

constexpr char kSound[] =
    ":020000040000FA\n:0400000001020304F2\n:0400100005060708D2\n:020000040001F9\n:0400000001020304F2\n:00000001FF\n";

struct Site : ::testing::Test {
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

}  // namespace corvane::tests
