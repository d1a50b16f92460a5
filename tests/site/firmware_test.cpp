#include <gtest/gtest.h>

#include "face/FirmwareDialog.h"
#include "platform/ProgramInfo.h"
#include "site/FirmwareListParser.h"
#include "support/AppBench.h"
#include "window/presenter/LogText.h"

namespace corvane::tests {

TEST(FirmwareList, KeepsTheFormatsAsymmetries) {
    const std::string complete = "PRODUCT=P\nVERSION=V\nDESC=D\nFILE=F\n";
    // list: "section|product|version|description|file;" each
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"any case, blanks, any line end", "[pgmA]\r\n  product = P  \rVersion=V\r\ndesc=D\nfile\t=\tF",
         "pgmA|P|V|D|F;"},
        {"other sections", "[xPGM]\n" + complete, ""},
        {"comments", "[PGM_A]\n;PRODUCT=X\nPRODUCT=P;1\nVERSION;x=V0\nVERSION=V ; new\nDESC==D=\nFILE=F\n; end",
         "PGM_A|P;1|V ; new|=D=|F;"},
        {"the last key wins", "[PGM_A]\n" + complete + "VERSION=V2\n", "PGM_A|P|V2|D|F;"},
        {"quotes stay", "[PGM_A]\nPRODUCT=\"P\"\nVERSION='V'\nDESC=\nFILE=F", "PGM_A|\"P\"|'V'||F;"},
        {"left-overs count for the next", "[PGM_A]\nPRODUCT=P\nVERSION=V\nDESC=D\n[PGM_B]\nFILE=F\n", "PGM_B|P|V|D|F;"},
        {"but not between", "[PGM_A]\nPRODUCT=P\n[X]\nVERSION=V\nDESC=D\nFILE=F\n[PGM_B]\nFILE=F\n", ""},
        {"a head without an end closes", "[PGM_A]\n" + complete + "[PGM_B\n" + complete + "[PGM_C]\n" + complete,
         "PGM_A|P|V|D|F;PGM_C|P|V|D|F;"},
        {"a head with a remark opens nothing", "[PGM_A] ; first\n" + complete, ""},
        {"lines without =", "[PGM_A]\nPRODUCT;\nnothing\n" + complete, "PGM_A|P|V|D|F;"},
        {"what parts fields is dropped", "[PGM_A]\n" + complete + "PRODUCT=P\x01\x05Q" + std::string(1, '\0') + "\n",
         "PGM_A|PQ|V|D|F;"},
    };
    for (const auto& [name, content, wanted] : cases) {
        std::string list;
        for (const auto& r : decodeRecords(encodeRecords(FirmwareListParser().parse(content)))) {
            list += r.section + "|" + r.product + "|" + r.version + "|" + r.description + "|" + r.file + ";";
        }
        EXPECT_EQ(list, wanted) << name;
    }
    const FirmwareRecord record{"S", "P", "V", "D", "F"};
    EXPECT_EQ(record.encoded(), "S\001P\002V\003D\004F\005");
    EXPECT_EQ(encodeRecords({record, record}), record.encoded() + std::string(1, '\0') + record.encoded());
    EXPECT_EQ(GetField(record.encoded(), 0) + GetField(record.encoded(), 4), "SF");
    EXPECT_EQ(GetField(record.encoded(), 5) + GetField("S", 1) + GetField(record.encoded(), -1), "");
}

TEST(Version, IsOneNumberAndTakesAStep) {
    const std::pair<const char*, double> cases[] = {{"V5.1R23", 5.01023},
                                                    {"V5.10R1", 5.10001},
                                                    {"TARN-R200 v5.1r2 (beta V9)", 5.01002},
                                                    {"V7", 7},
                                                    {"V7R3", 7.00003},
                                                    {"V2.5", 2.05},
                                                    {"V3.1(x)", 3.01},
                                                    {"none", 0},
                                                    {"V", 0},
                                                    {"DEVICE V1.0", 0}};
    for (const auto& [text, value] : cases) EXPECT_NEAR(versionValue(text), value, 1e-9) << text;
    EXPECT_EQ(versionStep("TARN-R200 V5.1R23 (a)", "V5.10R1"), "from V5.1R23 to V5.10R1, a newer version");
    EXPECT_EQ(versionStep("TARN V5.10", "v5.9R1"), "from V5.10 to v5.9R1, an OLDER version");
    EXPECT_EQ(versionStep("TARN V5.1", "V5.1R0"), "V5.1R0 once more, the version that the device has");
    EXPECT_EQ(versionStep("Unknown Device", "V5.1") + versionStep("TARN V5.1", ""), "");
}

TEST(Selection, OffersWhatFitsOrEverythingAndJudgesIt) {
    const FirmwareRecord zeta = {"PGM_Z", "ZETA", "V1.0", "z", "z.hex"}, yota = {"PGM_Y", "YOTA", "V1.0", "y", "y.hex"},
                         tarn = {"PGM_A", "TARN-R200", "V5.2R1", "one\\ntwo", "a.hex"},
                         any = {"PGM_B", "", "V5.1R23", "", "b.hex"};
    const std::vector<FirmwareRecord> all = {zeta, tarn, any};
    const std::tuple<std::vector<FirmwareRecord>, bool, bool, const char*, const char*, int, const char*> cases[] = {
        {all, false, false, "", "PGM_A - TARN-R200;PGM_B - ;", 0, "Firmware version is out of date"},
        {all, false, false, "PGM_B", "PGM_A - TARN-R200;PGM_B - ;", 1, "Firmware version is latest version"},
        {all, false, false, "PGM_Z", "PGM_A - TARN-R200;PGM_B - ;", 0, "Firmware version is out of date"},
        {all, true, false, "", "*PGM_Z - ZETA;PGM_A - TARN-R200;PGM_B - ;", 1, "Firmware version is out of date"},
        {all, true, false, "PGM_Z", "*PGM_Z - ZETA;PGM_A - TARN-R200;PGM_B - ;", 0, "Different Firmware!"},
        {all, false, true, "", "*PGM_Z - ZETA;PGM_A - TARN-R200;PGM_B - ;", 1, "Firmware Not Found!"},
        {{zeta}, true, false, "", "*PGM_Z - ZETA;", 0, "Different Firmware!"},
        {{zeta, yota}, true, false, "", "*PGM_Z - ZETA;*PGM_Y - YOTA;", -1, ""},
    };
    for (const auto& [records, forced, notFound, last, wanted, selected, verdict] : cases) {
        const FirmwareDialog dialog("COM3", "Tarn-R200 V5.1R23", encodeRecords(records), forced, notFound, last);
        std::string offered;
        for (const auto& entry : dialog.entries()) offered += entry.text + ";";
        EXPECT_EQ(offered, wanted);
        EXPECT_EQ(dialog.selected(), selected);
        EXPECT_EQ(dialog.verdict().text + (dialog.verdict().isWarning ? "!" : ""), verdict);
        EXPECT_EQ(dialog.details().empty(), selected < 0);
    }
}

TEST(Selection, SaysWhatIsUnusualBelowItsQuestion) {
    const struct {
        const char *product, *version, *device;
        bool isNotFound;
        Question question;
        const char *words, *below;
    } cases[] = {
        {"TARN", "V5.2", "TARN V5.1", false, Question::updateFirmware, "V5.1 V5.2 a newer version", ""},
        {"TARN", "V5.1", "TARN V5.1", false, Question::updateFirmware, "V5.1 V5.1 the version that it has", ""},
        {"TARN", "V5.0", "TARN V5.1", false, Question::unusualUpdate, "V5.1 V5.0 an OLDER version",
         "The image is OLDER than what the device runs: V5.0 after V5.1."},
        {"ZETA", "V6", "TARN V5.1", false, Question::unusualUpdate, "V5.1 V6 made for another product",
         "The image is made for ANOTHER PRODUCT: ZETA."},
        {"", "", "TARN V5.1", false, Question::unusualUpdate, "V5.1 ? not to be compared",
         "The image does not say what it is made for."},
        {"TARN", "V5.2", "Unknown Device", true, Question::unusualUpdate, "? V5.2 not to be compared",
         "The image is made for TARN.\r\nThe device sits in its boot loader and does not say what it is."},
    };
    for (const auto& one : cases) {
        FirmwareDialog dialog("COM1", one.device, encodeRecords({{"S", one.product, one.version, "", ""}}), true,
                              one.isNotFound, "");
        const auto compared = dialog.comparison();
        EXPECT_EQ(compared.from + " " + compared.to + " " + compared.words, one.words);
        fakes::RecordingOperator face;
        face.onBox = [&one](Question question, const std::string& text) {
            const std::string given =
                "Do you want to UPDATE firmware to \"S\"?\r\nWarning: firmware update incorrectly will damage the "
                "unit!";
            EXPECT_EQ(text, *one.below ? given + "\r\n\r\n" + one.below : given);
            EXPECT_TRUE(question == one.question && isUsual(question) == !*one.below);
            return false;
        };
        dialog.ok(face);
    }
}

struct Information : ::testing::Test, protected fakes::AppBench {
    bool check(const std::string& chosen) {
        inf.forget();
        return FTP_CheckFirmware(inf, face, chosen, information);
    }

    InfReader inf{folder};
    FirmwareInformation information;
};

TEST(Selection, ForgetsAChoiceThatASearchLeavesOut) {
    const auto record = [](const char* section) { return FirmwareRecord{section, "TARN", "V1", "", ""}; };
    EXPECT_EQ(FirmwareDialog("HID1", "V1\r\n[FTP Site]", {}, false, false, {}).header(),
              "[Local Site]\r\nComm Port : HID1\r\nDevice F/W: V1  [FTP Site]\r\n");
    FirmwareDialog dialog("COM3", "TARN V1", encodeRecords({record("A1"), record("A2"), record("B\xC4")}), false, false,
                          "A2");
    const std::pair<const char*, const char*> searches[] = {
        {"", "012 1 1"},    {"a", "012 1 1"},  // TARN holds it as well
        {"2 - t", "1 1 0"}, {"nothing", " -1 -1"}, {"", "012 -1 -1"}, {"b\xE4", "2 2 0"}, {"a", "012 2 2"},
    };
    for (const auto& [text, state] : searches) {
        dialog.find(text);
        std::string listed;
        for (const int entry : dialog.found()) listed += std::to_string(entry);
        EXPECT_EQ(listed + " " + std::to_string(dialog.selected()) + " " + std::to_string(dialog.selectedPlace()),
                  state)
            << text;
    }
}

TEST_F(Information, IsReadFromTheChosenSection) {
    write("firmware.inf/readme", "a folder is no file");
    EXPECT_FALSE(check("PGM_A V1"));
    EXPECT_EQ(face.log, "Not found firmware informat file!!\r\n");
    std::filesystem::remove_all(folder.folder.at("firmware.inf"));
    write("Firmware.INF",
          "[PGM_A]\nProduct='TARN-R200'\nVersion=V5.2R1\nDesc=one\\ntwo\nFile=/f/a.hex\nISP_BAUDRATE= 57600\n"
          "LinkDOC1=Notes\nLinkURL1=/n.txt\nLinkDOC10=Ten\nLinkURL10=/ten\nLinkDOC11=no\nProduct=later\n"
          "[PGM_B]\nProduct=B\nISP_BAUDRATE=fast\n[PGM_A]\nDesc=second\n[PGM_C]\nVersion=V1\n");
    EXPECT_TRUE(check("pgm_a V5.2R1 x"));
    EXPECT_EQ(
        information.product + "|" + information.version + "|" + information.updateInfo + "|" + information.firmwareFile,
        "TARN-R200|V5.2R1|one\r\ntwo|/f/a.hex");
    EXPECT_EQ(information.ispBaudRate, 57600);
    EXPECT_EQ(information.linkTitle[0] + information.linkUrl[0] + information.linkTitle[9] + information.linkUrl[9],
              "Notes/n.txtTen/ten");
    EXPECT_TRUE(check("PGM_B"));
    EXPECT_EQ(information.linkTitle[0] + std::to_string(information.ispBaudRate), "-1");
    face.log.clear();
    EXPECT_FALSE(check("PGM_C V1") || check("PGM_NONE V1"));
    EXPECT_EQ(face.log, "No new version in server!!\r\nNo new version in server!!\r\n");
    std::filesystem::remove(folder.folder.at("Firmware.INF"));  // what was taken apart is not read again
    EXPECT_TRUE(FTP_CheckFirmware(inf, face, "PGM_A", information));
    EXPECT_EQ(inf.information()->records().size(), 1U);

    write("CORVANE.inf",
          "[S]\nKey=a\\nb\\0c\nEmpty=\n");  // the program's own profile
    EXPECT_EQ(inf.ReadInfValue("s", "KEY", "none"), std::string("a\r\nb\0c", 6));
    EXPECT_EQ(inf.ReadInfValue("s", "Empty", "none") + inf.ReadInfValue("t", "Key", "none"), "nonenone");
}

TEST(LogText, DropsItsFirst255CharactersOnceItIsLongerThan16384) {
    LogText log;
    EXPECT_FALSE(log.append(std::string(255, 'a') + std::string(16129, 'b')));  // 16384 in all
    EXPECT_FALSE(log.append("c\r\n"));
    EXPECT_TRUE(log.append("Erase"));
    EXPECT_EQ(log.text(), std::string(16129, 'b') + "c\r\nErase");
    EXPECT_FALSE(log.append(std::string(20000, 'd')));  // how much is added does not matter
    EXPECT_EQ(log.text().size(), 36137u);
}

}  // namespace corvane::tests
