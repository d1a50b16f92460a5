#include "RunBench.h"
#include "settings/StoredSettings.h"
#include "site/SiteDigests.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// What protects a device and a record of it: questions before harm, the journal, digests, the record of jobs.
class Safety : public RunTest {
protected:
    /// "PORT:DEVICE;" for each.
    std::string journalled() const {
        std::string all;
        for (const auto& run : journal.read()) all += run.port + ":" + run.device + ";";
        return all;
    }

    RunJournal& journal = updater.journal();
};

TEST_F(Safety, AsksBeforeAnUnsoundImageHarms) {
    plug();
    std::vector<std::string> boxes;
    bool agrees = false;
    face.onBox = [&](Question question, const std::string& text) {
        boxes.push_back(text);
        return agrees || question == Question::updateFirmware;
    };
    loadImage("[INFO]\nPGM=TARN\nVER=V6\n:0400000001020304F3\n");
    start();
    EXPECT_EQ(boxes.back(),
              "This image does not add up:\r\nline 4 has a wrong checksum\r\nthe file has no end record\r\n"
              "Install it all the same?");
    EXPECT_EQ(device().log().switches, 0);
    EXPECT_TRUE(log().ends_with("TARN V6()\r\n\r\n"));  // and not a word more
    agrees = true;
    EXPECT_EQ(start().end, RunEnd::programmingFailed);
}

TEST_F(Safety, SendsTheImageThatWasAskedAboutWhateverBecomesOfItsFile) {
    const auto file = folder.folder.at("local.hex");
    for (const bool isRemoved : {false, true}) {
        plugOnly({"erase-nak", "nak@:04002000090A0B0CB2x3"});  // each read of the file would be seen: three tries
        loadImage();
        write("local.hex", replaceAll(kImage, "PGM=TARN-R200", "PGM=TARN"));  // built anew since it was chosen
        face.onBox = [&](Question, const std::string&) {
            if (isRemoved) return std::filesystem::remove(file);
            write("local.hex", "[INFO]\nPGM=TARN\n:0400000009090909D8\n:00000001FF\n");
            return true;
        };
        EXPECT_EQ(start().end, RunEnd::updated);
        EXPECT_NE(log().find("Product   : TARN\r\n"), std::string::npos) << log();
        EXPECT_EQ(memoryFault(), "");
    }
    face.onBox = nullptr;
    EXPECT_EQ(verdictFor(start()).facts.front(), "The image is not there any more: " + file + ".");
}

TEST_F(Safety, RemembersADeviceWithoutFirmware) {
    plug();
    loadImage();
    std::vector<std::string> seen;
    face.onText = [&](const std::string& text) {
        if (text == "Erase Firmware..." || text == "Programming..." || text == "Update Finish\r\n")
            seen.push_back(journalled());
    };
    EXPECT_EQ(start().end, RunEnd::updated);
    const std::string entry = "COM1:TARN-R200 V5.1R23;";
    EXPECT_EQ(seen, (std::vector<std::string>{entry, entry, entry}));
    EXPECT_EQ(journalled(), "");
    face.onText = nullptr;
    device().faults().add("nak@:00000001FFx9");
    EXPECT_EQ(start().end, RunEnd::programmingFailed);
    EXPECT_EQ(journalled(), entry);
    EXPECT_FALSE(inhibitor.isHeld);
    EXPECT_EQ(inhibitor.reasons.size(), 2U);
    plug({}, 2);
    updater.session().rememberedPort = "COM2";
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(journalled(), entry);  // that was another device
    updater.session().rememberedPort.clear();
    EXPECT_TRUE(journal.add({"t", "COM2", "b", "/y"}));
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(journalled(), "COM2:b;");
    models::DeviceOptions stuck;
    stuck.startsInBoot = true;
    plugOnly({}, stuck);
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(journalled(), "");  // it was the one of COM2, in all likelihood
}

TEST_F(Safety, KeepsAJournalOfSeveralPortsAndTheLastFilesThatExist) {
    EXPECT_TRUE(journal.add({"t1", "COM1", "a\nb", "/x"}) && journal.add({"t2", "COM2", "c", "/y"}) &&
                journal.add({"t3", "COM1", "d", "/z"}));
    EXPECT_EQ(journalled(), "COM2:c;COM1:d;");
    EXPECT_TRUE(journal.remove("COM2"));
    EXPECT_EQ(journalled(), "COM1:d;");
    folder.data.file("Corvane/interrupted-runs", "cut\noff\n");
    EXPECT_EQ(journalled(), "");

    std::vector<std::string> paths;
    StoredSettings recent(settings);
    for (const char* name : {"0", "1", "2", "3", "4", "5"}) paths.push_back(folder.folder.file(name, "x"));
    for (const int i : {0, 1, 2, 3, 4, 5, 2}) EXPECT_TRUE(recent.addRecentFile(paths[static_cast<std::size_t>(i)]));
    std::filesystem::remove(paths[4]);
    EXPECT_EQ(recent.recentFiles(), (std::vector<std::string>{paths[2], paths[5], paths[3], paths[1]}));
}

TEST_F(Safety, RecordsEveryJob) {
    asksAfterwards(true);
    models::DeviceOptions options;
    options.version = "=TARN-R200 \"A\", V5.1";
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options);
    loadImage();
    EXPECT_EQ(updater.conclude(start()).kind, Verdict::Kind::updated);
    const auto sum = digest.sha256(kImage);
    const std::string line =
        "2026-11-24 14:02:07,COM1,\"'=TARN-R200 \"\"A\"\", V5.1\",TARN-R200 V5.2R1,local.hex," + sum + ",0,updated";
    EXPECT_EQ(fakes::ScratchFolder::content(folder.dataPath() + "/jobs.csv"),
              "time,port,device before,device after,image,SHA-256,repeated records,verdict\r\n" + line + "\r\n");
    EXPECT_EQ(joined(jobFields(line), "|"),
              "2026-11-24 14:02:07|COM1|'=TARN-R200 \"A\", V5.1|TARN-R200 V5.2R1|local.hex|" + sum + "|0|updated");
    face.closesSelection = true;
    EXPECT_EQ(updater.conclude(start()).kind, Verdict::Kind::untouched);
    EXPECT_EQ(updater.jobs().last(1),
              std::vector<std::string>{"2026-11-24 14:02:07,COM1,TARN-R200 V5.2R1,,,,0,untouched"});
    EXPECT_EQ(updater.jobs().last(9).size(), 2U);
    EXPECT_EQ(updater.jobs().updatedDevices(), 1);
}

TEST_F(Safety, ChecksTheDigestOfAnImageWhenThereIsOne) {
    const auto runWith = [this](const std::string& line) {
        const std::string site = "ftp://u:@h";
        updater.site().disconnect();
        presenter.account("h", "u", "");
        reader.answers[site].content = "listing";
        reader.answers[site + "/firmware/firmware.inf"].content =
            "[PGM_A]\nPRODUCT=TARN\nVERSION=V9\nDESC=\nFILE=/a.hex\n" + line;
        reader.answers[site + "/a.hex"].content = kImage;
        return start();
    };
    plug();
    const auto right = digest.sha256(kImage), wrong = std::string(64, '0');
    EXPECT_EQ(runWith("sha256=" + upperCase(right) + "\n").end, RunEnd::updated);
    const auto report = runWith("SHA256=" + wrong + "\n");
    EXPECT_EQ(report.cause, "its SHA-256 is " + right + ", but firmware.inf says " + wrong);
    EXPECT_EQ(stored("Download/a.hex"), "(none)");
    EXPECT_EQ(device().log().erases, 1);
    presenter.optLine_Click(true);
    write("Download/a.hex", kImage);
    EXPECT_EQ(start().cause, report.cause);
    EXPECT_EQ(stored("Download/a.hex"), kImage);

    const auto digestOf = [](const std::string& path) {
        return path == "/a.hex" ? "aa" : path == "/b.hex" ? "bb" : std::string();
    };
    EXPECT_EQ(withDigests("; x\r\n[Corvane]\r\nFile=/p\r\n\r\n[PGM_A]\r\nFILE=/a.hex\r\nSHA256=old\r\nDESC=d\r\n\r\n"
                          "[pgm_b]\r\nfile = b.hex\r\n[PGM_C]\r\nFILE=/gone.hex\r\nSHA256=keep\r\n",
                          digestOf),
              "; x\r\n[Corvane]\r\nFile=/p\r\n\r\n[PGM_A]\r\nFILE=/a.hex\r\nSHA256=aa\r\nDESC=d\r\n\r\n"
              "[pgm_b]\r\nfile = b.hex\r\nSHA256=bb\r\n[PGM_C]\r\nFILE=/gone.hex\r\nSHA256=keep\r\n");
    EXPECT_EQ(withDigests("[PGM_A]\nFILE=/a.hex", digestOf), "[PGM_A]\nFILE=/a.hex\nSHA256=aa\n");
}

}  // namespace
}  // namespace corvane
