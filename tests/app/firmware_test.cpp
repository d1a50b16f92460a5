#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/FirmwareDialog.h"
#include "app/FirmwareListParser.h"
#include "app/LocalImageLoader.h"
#include "app/ProgramInfo.h"
#include "support/AppBench.h"

namespace corvane {
namespace {

TEST(FirmwareList, KeepsTheFormatsAsymmetries) {
    struct Case {
        const char* name;
        std::string content;
        std::string list;  // "section|product|version|description|file;" each
    };
    const std::string complete = "PRODUCT=P\nVERSION=V\nDESC=D\nFILE=F\n";
    const Case cases[] = {
        {"plain", "[PGM_A]\n" + complete, "PGM_A|P|V|D|F;"},
        {"any case, blanks, any line end", "[pgmA]\r\n  product = P  \rVersion=V\r\ndesc=D\nfile\t=\tF",
         "pgmA|P|V|D|F;"},
        {"other sections", "[Corvane]\n" + complete + "[xPGM]\n" + complete, ""},
        {"comments", "[PGM_A]\n;PRODUCT=X\nPRODUCT=P;1\nVERSION;x=V0\nVERSION=V ; new\nDESC==D=\nFILE=F\n; end",
         "PGM_A|P;1|V ; new|=D=|F;"},
        {"the last key wins", "[PGM_A]\n" + complete + "VERSION=V2\n", "PGM_A|P|V2|D|F;"},
        {"quotes stay", "[PGM_A]\nPRODUCT=\"P\"\nVERSION='V'\nDESC=\nFILE=F", "PGM_A|\"P\"|'V'||F;"},
        {"left-overs count for the next", "[PGM_A]\nPRODUCT=P\nVERSION=V\nDESC=D\n[PGM_B]\nFILE=F\n", "PGM_B|P|V|D|F;"},
        {"but not between", "[PGM_A]\nPRODUCT=P\n[X]\nVERSION=V\nDESC=D\nFILE=F\n[PGM_B]\nFILE=F\n", ""},
        {"a head without an end closes", "[PGM_A]\n" + complete + "[PGM_B\n" + complete + "[PGM_C]\n" + complete,
         "PGM_A|P|V|D|F;PGM_C|P|V|D|F;"},
        {"a head with a remark opens nothing", "[PGM_A] ; first\n" + complete, ""},
        {"an end line", "[PGM_A]\n" + complete + "[End]\nPRODUCT=X\n", "PGM_A|P|V|D|F;"},
        {"lines without =", "[PGM_A]\nPRODUCT;\nnothing\n" + complete, "PGM_A|P|V|D|F;"},
        {"nothing", "", ""},
    };
    for (const auto& one : cases) {
        std::string list;
        for (const auto& r : FirmwareListParser().parse(one.content)) {
            list += r.section + "|" + r.product + "|" + r.version + "|" + r.description + "|" + r.file + ";";
        }
        EXPECT_EQ(list, one.list) << one.name;
    }
}

TEST(FirmwareList, SurvivesBinaryContentAndHugeLines) {
    std::string content = "[PGM_A]\nPRODUCT=P\x01\x05Q" + std::string(1, '\0') +
                          "\nVERSION=V\nDESC=" + std::string(1 << 20, 'd') + "\nFILE=F\n";
    for (int i = 0; i < 4096; ++i) content += static_cast<char>(i * 37);
    const auto records = decodeRecords(encodeRecords(FirmwareListParser().parse(content)));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].product, "PQ");
    EXPECT_EQ(records[0].description.size(), 1U << 20);
}

TEST(FirmwareRecords, AreOneTextEach) {
    const FirmwareRecord record{"S", "P", "V", "D", "F"};
    EXPECT_EQ(record.encoded(),
              "S\x01P\x02V\x03"
              "D\x04"
              "F\x05");
    EXPECT_EQ(GetField(record.encoded(), 0) + GetField(record.encoded(), 2) + GetField(record.encoded(), 4), "SVF");
    EXPECT_EQ(GetField(record.encoded(), 5) + GetField("S", 1) + GetField(record.encoded(), -1), "");
    EXPECT_EQ(encodeRecords({record, record}), record.encoded() + std::string(1, '\0') + record.encoded());
    EXPECT_TRUE(decodeRecords("").empty());
}

TEST(Version, IsOneNumber) {
    struct Case {
        const char* text;
        double value;
    };
    for (const auto& one :
         {Case{"V5.1R23", 5.01023}, Case{"V5.10R1", 5.10001}, Case{"V5.9R9", 5.09009},
          Case{"TARN-R200 v5.1r2 (beta V9)", 5.01002}, Case{"V7", 7}, Case{"V7R3", 7.00003}, Case{"V2.5", 2.05},
          Case{"V3.1(x)", 3.01}, Case{"none", 0}, Case{"", 0}, Case{"V", 0}, Case{"DEVICE V1.0", 0}}) {
        EXPECT_NEAR(versionValue(one.text), one.value, 1e-9) << one.text;
    }
}

TEST(Version, TakesAStep) {
    EXPECT_EQ(versionStep("TARN-R200 V5.1R23 (a)", "V5.10R1"), "from V5.1R23 to V5.10R1, a newer version");
    EXPECT_EQ(versionStep("TARN V5.10", "v5.9R1"), "from V5.10 to v5.9R1, an OLDER version");
    EXPECT_EQ(versionStep("TARN V5.1", "V5.1R0"), "V5.1R0 once more, the version that the device has");
    EXPECT_EQ(versionStep("Unknown Device", "V5.1") + versionStep("TARN V5.1", ""), "");
}

class Dialog : public ::testing::Test {
protected:
    FirmwareDialog make(bool forced, bool notFound, const std::string& last = "",
                        const std::string& device = "Tarn-R200 V5.1R23") {
        return {"COM3", device, encodeRecords(records), forced, notFound, last};
    }

    static std::string texts(const FirmwareDialog& dialog) {
        std::string all;
        for (const auto& entry : dialog.entries()) all += entry.text + ";";
        return all;
    }

    std::vector<FirmwareRecord> records = {{"PGM_Z", "ZETA", "V1.0", "z", "z.hex"},
                                           {"PGM_A", "TARN-R200", "V5.2R1", "one\\ntwo", "a.hex"},
                                           {"PGM_B", "", "V5.1R23", "", "b.hex"}};
    fakes::RecordingOperator face;
};

TEST_F(Dialog, OffersWhatFitsOrEverything) {
    EXPECT_EQ(texts(make(false, false)), "PGM_A - TARN-R200;PGM_B - ;");
    EXPECT_EQ(texts(make(true, false)), "*PGM_Z - ZETA;PGM_A - TARN-R200;PGM_B - ;");
    EXPECT_EQ(texts(make(false, true, "", "Unknown Device")), "*PGM_Z - ZETA;*PGM_A - TARN-R200;PGM_B - ;");
    EXPECT_EQ(make(false, false, "PGM_B").selected(), 1);
    EXPECT_EQ(make(false, false, "PGM_Z").selected(), 0);
    EXPECT_EQ(make(true, false).selected(), 1);
    EXPECT_EQ(make(true, false, "PGM_Z").selected(), 0);
    records = {{"PGM_Z", "ZETA", "V1.0", "z", "z.hex"}};
    EXPECT_EQ(make(true, false).selected(), 0);
    records.push_back({"PGM_Y", "YOTA", "V1.0", "y", "y.hex"});
    EXPECT_EQ(make(true, false).selected(), -1);
    EXPECT_EQ(make(true, false).details(), "");
}

TEST_F(Dialog, ShowsTheDeviceAndTheEntry) {
    auto dialog = make(true, false);
    EXPECT_EQ(dialog.header(), "[Local Site]\r\nComm Port : COM3\r\nDevice F/W: Tarn-R200 V5.1R23\r\n");
    EXPECT_EQ(dialog.details(),
              "[FTP Site]\r\nROM Number: PGM_A\r\nProduct   : TARN-R200\r\nVersion   : V5.2R1\r\n\r\n"
              "[Update Information]\r\none\r\ntwo\r\n");
    const auto verdict = [&](int index) {
        dialog.select(index);
        return dialog.verdict().text + (dialog.verdict().isWarning ? "!" : "");
    };
    EXPECT_EQ(verdict(0), "Different Firmware!");
    EXPECT_EQ(verdict(1), "Firmware version is out of date");
    EXPECT_EQ(verdict(2), "Firmware version is latest version");
    dialog = make(false, true);
    EXPECT_EQ(verdict(0), "Firmware Not Found!");
    EXPECT_EQ(verdict(1), "Firmware Not Found!");
}

TEST_F(Dialog, IsClosedByAnAnsweredQuestionOnly) {
    auto dialog = make(false, false);
    face.agrees = false;
    dialog.ok(face);
    EXPECT_FALSE(dialog.isChosen());
    dialog.select(7);
    dialog.ok(face);
    dialog.select(0);
    face.agrees = true;
    dialog.ok(face);
    EXPECT_TRUE(dialog.isChosen());
    EXPECT_EQ(dialog.result(), "PGM_A V5.2R1");
    const std::string question =
        "Do you want to UPDATE firmware to \"PGM_A\"?\r\nWarning: firmware update incorrectly will damage the unit!";
    EXPECT_EQ(face.boxes, (std::vector<std::string>{question, question}));
}

class Information : public ::testing::Test {
protected:
    bool check(const std::string& chosen) {
        return FTP_CheckFirmware(inf, bench.folder, bench.face, chosen, information);
    }

    fakes::AppBench bench;
    InfReader inf{bench.profile, bench.folder};
    FirmwareInformation information;
};

TEST_F(Information, IsReadFromTheChosenSection) {
    bench.write("Firmware.INF",
                "[PGM_A]\nProduct='TARN-R200'\nVersion=V5.2R1\nDesc=one\\ntwo\nFile=/f/a.hex\nISP_BAUDRATE= 57600\n"
                "LinkDOC1=Notes\nLinkURL1=/n.txt\nLinkDOC10=Ten\nLinkURL10=/ten\nLinkDOC11=no\nProduct=later\n"
                "[PGM_B]\nProduct=B\nISP_BAUDRATE=fast\n[PGM_C]\nVersion=V1\n[PGM_A]\nDesc=second\n");
    EXPECT_TRUE(check("pgm_a V5.2R1 x"));
    EXPECT_EQ(
        information.product + "|" + information.version + "|" + information.updateInfo + "|" + information.firmwareFile,
        "TARN-R200|V5.2R1|one\r\ntwo|/f/a.hex");
    EXPECT_EQ(information.ispBaudRate, 57600);
    EXPECT_EQ(information.linkTitle[0] + information.linkUrl[0] + information.linkTitle[9] + information.linkUrl[9],
              "Notes/n.txtTen/ten");
    EXPECT_TRUE(check("PGM_B"));
    EXPECT_EQ(information.ispBaudRate, -1);
    EXPECT_EQ(information.linkTitle[0], "");
    EXPECT_FALSE(check("PGM_C V1"));
    EXPECT_FALSE(check("PGM_NONE V1"));
    EXPECT_EQ(bench.face.log, "No new version in server!!\r\nNo new version in server!!\r\n");
}

TEST_F(Information, NeedsItsFile) {
    bench.write("firmware.inf/readme", "a folder is no file");
    EXPECT_FALSE(check("PGM_A V1"));
    EXPECT_EQ(bench.face.log, "Not found firmware informat file!!\r\n");
}

TEST_F(Information, FallsBackToTheProgramsOwnProfile) {
    bench.write("CORVANE.inf", "[S]\nKey=a\\nb\\0c\nEmpty=\n");
    EXPECT_EQ(inf.ReadInfValue("s", "KEY", "none"), std::string("a\r\nb\0c", 6));
    EXPECT_EQ(inf.ReadInfValue("s", "Empty", "none"), "none");
    EXPECT_EQ(inf.ReadInfValue("t", "Key", "none"), "none");
}

TEST_F(Information, OfALocalImageStandsInItsHead) {
    LocalImage image;
    const auto load = [&](const std::string& content) {
        return LoadHexInfo(inf, bench.folder.folder.file("x.hex", content), image);
    };
    EXPECT_TRUE(load("[INFO]\r\nPGM=R\xE9\r\nVER=V1\r\nBUD=2024/01/31\r\n:00000001FF\r\n\r\n:junk"));
    EXPECT_EQ(image.description(), "R\xE9 V1(2024/01/31)");
    EXPECT_EQ(image.records, (std::vector<std::string>{":00000001FF", ":junk"}));
    EXPECT_TRUE(load("[INFO]\nVER=V2\n:00000001FF"));
    EXPECT_EQ(image.program + image.version + image.date, "");
    std::string many = "[INFO]\nPGM=P\n";
    for (int i = 0; i < 32770; ++i) many += ":00000001FF\n";
    EXPECT_TRUE(load(many));
    EXPECT_EQ(image.records.size(), 32768U);
    for (const char* bad : {"", "[INFO]\nPGM=P\n", " :00000001FF\n"}) {
        EXPECT_FALSE(load(bad));
        EXPECT_EQ(image.program + image.version + image.path, "Invalid File Format!!");
    }
    EXPECT_FALSE(LoadHexInfo(inf, bench.folder.path(), image));
    const auto pipe =
        bench.folder.folder.at("pipe");  // what it gives it gives once, and an image is read several times
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(LoadHexInfo(inf, pipe, image));
}

}  // namespace
}  // namespace corvane
