#include "RunBench.h"
#include "app/RecentFiles.h"
#include "app/SiteDigests.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// What protects a device and a record of it: questions before harm, the journal, digests, the record of jobs.
class Safety : public RunTest {
protected:
    std::string journal() const {
        std::string all;
        for (const auto& run : RunJournal(bench.folder).read()) all += run.port + ":" + run.device + ";";
        return all;
    }

    std::string jobs() const { return fakes::ScratchFolder::content(bench.folder.dataPath() + "/jobs.csv"); }
};

TEST_F(Safety, AsksBeforeAnUnsoundImageHarms) {
    plug();
    loadImage("[INFO]\nPGM=TARN\nVER=V1\n:0400000001020304F3\n");
    std::vector<std::string> boxes;
    bench.face.onBox = [&](Question question, const std::string& text) {
        boxes.push_back(text);
        return question == Question::updateFirmware;
    };
    EXPECT_EQ(start().end, RunEnd::imageRefused);
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[1],
              "This image does not add up:\r\nline 4 has a wrong checksum\r\nthe file has no end record\r\n"
              "Install it all the same?");
    EXPECT_EQ(device().log().switches, 0);
    EXPECT_EQ(log().find("checksum"), std::string::npos);
    EXPECT_EQ(log().substr(log().size() - 13), "TARN V1()\r\n\r\n");  // and not a word more
    bench.face.onBox = [&](Question, const std::string&) { return true; };
    EXPECT_EQ(start().end, RunEnd::programmingFailed);
    boxes.clear();
    bench.face.onBox = [&](Question question, const std::string& text) {
        boxes.push_back(text);
        return question == Question::updateFirmware;
    };
    loadImage();
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(Safety, RemembersADeviceWithoutFirmware) {
    plug();
    loadImage();
    std::vector<std::string> seen;
    bench.face.onText = [&](const std::string& text) {
        if (text == "Erase Firmware..." || text == "Programming..." || text == "Update Finish\r\n")
            seen.push_back(journal());
    };
    EXPECT_EQ(start().end, RunEnd::updated);
    const std::string entry = "COM1:TARN-R200 V5.1R23;";
    EXPECT_EQ(seen, (std::vector<std::string>{entry, entry, entry}));
    EXPECT_EQ(journal(), "");
    bench.face.onText = nullptr;

    device().faults().add("nak@:00000001FFx9");
    EXPECT_EQ(start().end, RunEnd::programmingFailed);
    EXPECT_EQ(journal(), entry);
    EXPECT_FALSE(bench.inhibitor.isHeld);
    EXPECT_EQ(bench.inhibitor.reasons.size(), 2U);
    const auto left = updater.journal().read().front();
    EXPECT_EQ(left.text(),
              "A device was left in its boot loader at 2026-11-24 14:02: COM1, TARN-R200 V5.1R23. To go on, force an "
              "update with the image " +
                  presenter.choices().image.path + ".");
    plug({}, 2);
    updater.session().rememberedPort = "COM2";
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(journal(), entry);  // that was another device
    updater.session().rememberedPort.clear();
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(journal(), "");
}

TEST_F(Safety, ForgetsOnlyTheDeviceThatIsWellAgain) {
    models::DeviceOptions stuck;
    stuck.startsInBoot = true;
    plug(stuck);
    loadImage();
    const RunJournal journal(bench.folder);
    journal.add({"t", "COM1", "a", "/x"});
    journal.add({"t", "COM2", "b", "/y"});
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(this->journal(), "COM2:b;");
    devices.clear();
    bench.serial.map.entries.clear();
    plug(stuck);
    updater.session().rememberedPort.clear();
    EXPECT_EQ(start(true).end, RunEnd::updated);  // the one of COM2, in all likelihood
    EXPECT_EQ(this->journal(), "");
}

TEST_F(Safety, TakesNoFileWithoutDataForAnImage) {
    plug();
    loadImage("[INFO]\nPGM=TARN\n:00000001FF\n");
    EXPECT_EQ(start().end, RunEnd::imageMissing);
    EXPECT_EQ(log().substr(log().size() - 26), "Firmware download fail!!\r\n");
    EXPECT_EQ(device().log().switches, 0);
}

TEST_F(Safety, KeepsAJournalOfSeveralPorts) {
    const RunJournal journal(bench.folder);
    EXPECT_TRUE(journal.read().empty());
    EXPECT_TRUE(journal.add({"t1", "COM1", "a\nb", "/x"}) && journal.add({"t2", "COM2", "c", "/y"}) &&
                journal.add({"t3", "COM1", "d", "/z"}));
    EXPECT_EQ(this->journal(), "COM2:c;COM1:d;");
    EXPECT_TRUE(journal.remove("COM2"));
    EXPECT_EQ(this->journal(), "COM1:d;");
    bench.folder.data.file("Corvane/interrupted-runs", "cut\noff\n");
    EXPECT_TRUE(journal.read().empty());
    EXPECT_TRUE(journal.clear() && journal.clear());
}

TEST_F(Safety, RemembersTheLastFilesThatExist) {
    RecentFiles recent(bench.settings);
    std::vector<std::string> paths;
    for (int i = 0; i < 6; ++i) {
        paths.push_back(bench.folder.folder.file("f" + std::to_string(i), "x"));
        EXPECT_TRUE(recent.add(paths.back()));
    }
    EXPECT_TRUE(recent.add(paths[2]));
    std::filesystem::remove(paths[4]);
    EXPECT_EQ(RecentFiles(bench.settings).list(), (std::vector<std::string>{paths[2], paths[5], paths[3], paths[1]}));
}

TEST_F(Safety, RecordsEveryJob) {
    models::DeviceOptions options;
    options.version = "=TARN-R200 \"A\", V5.1";
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options);
    loadImage();
    const auto verdict = updater.conclude(start(), true);
    EXPECT_EQ(verdict.kind, Verdict::Kind::updated);
    const auto digest = bench.digest.sha256(kImage);
    const std::string head = "time,port,device before,device after,image,SHA-256,repeated records,verdict\r\n";
    const std::string line =
        "2026-11-24 14:02:07,COM1,\"'=TARN-R200 \"\"A\"\", V5.1\",TARN-R200 V5.2R1,local.hex," + digest + ",0,updated";
    EXPECT_EQ(jobs(), head + line + "\r\n");
    EXPECT_EQ(joined(jobFields(line), "|"),
              "2026-11-24 14:02:07|COM1|'=TARN-R200 \"A\", V5.1|TARN-R200 V5.2R1|local.hex|" + digest + "|0|updated");
    bench.face.closesSelection = true;
    updater.conclude(start(), true);
    EXPECT_EQ(updater.jobs().last(1),
              std::vector<std::string>{"2026-11-24 14:02:07,COM1,TARN-R200 V5.2R1,,,,0,untouched"});
    EXPECT_EQ(updater.jobs().last(9).size(), 2U);
    EXPECT_EQ(updater.jobs().updatedDevices(), 1);
    updater.jobs().keepIn(bench.folder.path());
    EXPECT_EQ(updater.conclude(start(), true).facts.back(),
              "The record " + bench.folder.path() + " could not be written.");
}

class DigestOfAnImage : public Safety {
protected:
    RunReport runWith(const std::string& digest) {
        updater.site().disconnect();
        const std::string site = "ftp://u:@h";
        presenter.account("h", "u", "");
        bench.reader.answers[site].content = "listing";
        bench.reader.answers[site + "/firmware/firmware.inf"].content =
            "[PGM_A]\nPRODUCT=TARN\nVERSION=V9\nDESC=\nFILE=/a.hex\n" + digest;
        bench.reader.answers[site + "/a.hex"].content = kImage;
        return start();
    }
};

TEST_F(DigestOfAnImage, MustMatchWhenThereIsOne) {
    plug();
    const auto right = bench.digest.sha256(kImage);
    EXPECT_EQ(runWith("").end, RunEnd::updated);
    EXPECT_EQ(runWith("sha256=" + upperCase(right) + "\n").end, RunEnd::updated);
    const auto report = runWith("SHA256=" + std::string(64, '0') + "\n");
    EXPECT_EQ(report.end, RunEnd::imageMissing);
    EXPECT_EQ(log().substr(log().size() - 52), "Downloading File... < NG\r\nFirmware download fail!!\r\n");
    EXPECT_EQ(report.siteProblem,
              "the image's SHA-256 is " + right + ", but firmware.inf says " + std::string(64, '0'));
    EXPECT_FALSE(std::filesystem::exists(bench.folder.folder.at("Download/a.hex")));
    EXPECT_EQ(device().log().erases, 2);

    presenter.optLine_Click(true);
    bench.write("Download/a.hex", kImage);
    EXPECT_EQ(start().end, RunEnd::imageMissing);
    EXPECT_EQ(fakes::ScratchFolder::content(bench.folder.folder.at("Download/a.hex")), kImage);
}

TEST_F(DigestOfAnImage, IsWrittenIntoEachSection) {
    const auto digestOf = [](const std::string& path) {
        return path == "/a.hex" ? "aa" : path == "/b.hex" ? "bb" : std::string();
    };
    EXPECT_EQ(
        withDigests(
            "; x\r\n[Corvane]\r\nFile=/p\r\n\r\n[PGM_A]\r\nFILE=/a.hex\r\nSHA256=old\r\nDESC=d\r\n\r\n[pgm_b]\r\nfile "
            "= b.hex\r\n"
            "[PGM_C]\r\nFILE=/gone.hex\r\nSHA256=keep\r\n",
            digestOf),
        "; x\r\n[Corvane]\r\nFile=/p\r\n\r\n[PGM_A]\r\nFILE=/a.hex\r\nSHA256=aa\r\nDESC=d\r\n\r\n[pgm_b]\r\nfile = "
        "b.hex\r\nSHA256=bb\r\n"
        "[PGM_C]\r\nFILE=/gone.hex\r\nSHA256=keep\r\n");
    EXPECT_EQ(withDigests("[PGM_A]\nFILE=/a.hex", digestOf), "[PGM_A]\nFILE=/a.hex\nSHA256=aa\n");
}

}  // namespace
}  // namespace corvane
