#include "RunBench.h"
#include "settings/StoredSettings.h"
#include "site/SiteDigests.h"
#include "text/Text.h"

namespace corvane::tests {

/// What protects a device and a record of it: questions before harm, the journal, digests, the record of jobs.
struct Safety : RunTest {
    /// "PORT:DEVICE:FIRMWARE;" for each device that the next start would speak of, were this program killed now.
    std::string journalled() {
        constexpr const char* kFirmware[] = {"old", "uncertain", "none", "whole"};
        std::string all;
        for (const auto& run : RunJournal(folder, files, processes).left())
            all += run.port + ":" + run.device + ":" + kFirmware[static_cast<int>(run.firmware)] + ";";
        return all;
    }

    /// A device that an earlier run has left, with that firmware.
    void leave(const InterruptedRun& run) {
        RunJournal earlier(folder, files, processes);
        EXPECT_EQ(earlier.begin(run, false), "");
        EXPECT_EQ(earlier.leave(), "");
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

TEST_F(Safety, RemembersADeviceFromBeforeItsSwitchOn) {
    plug();
    loadImage();
    std::vector<std::string> seen;
    face.onText = [&](const std::string& text) {
        if (text.starts_with("GoTo ISP Mode") || text == "Erase Firmware..." || text == "Programming..." ||
            text == "Update Finish\r\n")
            seen.push_back(journalled());
    };
    EXPECT_EQ(start().end, RunEnd::updated);
    const std::string entry = "COM1:TARN-R200 V5.1R23:";
    EXPECT_EQ(seen,
              (std::vector<std::string>{entry + "old;", entry + "uncertain;", entry + "none;", entry + "whole;"}));
    EXPECT_EQ(journalled(), "");
    face.onText = nullptr;
    device().faults().add("nak@:00000001FFx9");
    EXPECT_EQ(start().end, RunEnd::programmingFailed);
    EXPECT_EQ(journalled(), entry + "none;");
    EXPECT_FALSE(inhibitor.isHeld);
    EXPECT_EQ(inhibitor.reasons.size(), 2U);
    plug({}, 2);
    updater.session().rememberedPort = "COM2";
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(journalled(), entry + "none;");  // that was another device
    updater.session().rememberedPort.clear();
    leave({"t", "COM2", "b", "/y"});
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(journalled(), "COM2:b:none;");
    plugOnly({}, {.startsInBoot = true});
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(journalled(), "");  // it was the one of COM2: nothing else is missed
}

TEST_F(Safety, KnowsALeftDeviceAgain) {
    using Firmware = InterruptedRun::Firmware;
    const InterruptedRun a{"t1", "COM1", "a", "/x", "reader 7"}, b{"t2", "COM2", "b", "/y"},
        programmed{"t1", "COM1", "a", "/x", "", Firmware::none, {}, "V5.2"},
        uncertain{"t1", "COM1", "a", "/x", "", Firmware::uncertain};
    const std::tuple<InterruptedRun, InterruptedRun, bool, const char*> cases[] = {
        // in its boot loader: its adapter elsewhere, its port, another adapter at its port, nothing of it
        {a, {"t", "COM5", "", "/z", "reader 7"}, true, "COM2:b:none;COM5:a:none;"},
        {a, {"t", "COM1", "", "/z"}, true, "COM2:b:none;COM1:a:none;"},
        {a, {"t", "COM1", "", "/x", "reader 8"}, true, "COM2:b:none;COM1:a:none;"},
        {a, {"t", "COM6", "", "/z"}, true, "COM1:a:none;COM2:b:none;COM6::none;"},
        // one that runs is not the one without firmware
        {a, {"t", "COM1", "a", "/x"}, false, "COM1:a:none;COM2:b:none;COM1:a:none;"},
        // but may be the one that was programmed after all, or the one with its old
        {programmed, {"t", "COM1", "a V5.2", "/z"}, false, "COM2:b:none;COM1:a V5.2:none;"},
        {uncertain, {"t", "COM1", "a", "/z"}, false, "COM2:b:none;COM1:a:none;"},
    };
    for (const auto& [left, next, isInBootLoader, known] : cases) {
        std::filesystem::remove(journal.path());
        leave(left);
        leave(b);
        EXPECT_EQ(RunJournal(folder, files, processes).begin(next, isInBootLoader), "");
        EXPECT_EQ(journalled(), known);
    }
    std::filesystem::remove(journal.path());
    processes.others = {{7, "then"}};
    processes.self = processes.others[0];
    EXPECT_EQ(RunJournal(folder, files, processes).begin({"t", "COM1", "a\nb", "/x"}, false), "");
    processes.self = {1, "now"};
    EXPECT_EQ(journalled(), "");  // somebody works on it
    processes.others = {{7, "later"}};
    EXPECT_EQ(journalled(), "COM1:ab:none;");
    EXPECT_EQ(journal.forget({journal.left().front()}), "");
    EXPECT_EQ(journalled(), "");
    folder.data.file("Corvane/interrupted-runs", "t1\nCOM1\na\n/x\ncut\noff\n");  // as older versions wrote it
    EXPECT_EQ(journalled(), "COM1:a:none;");
}

TEST_F(Safety, SaysWhyTheJournalCouldNotBeKeptUpOrCleared) {
    const auto remarks = [this](const std::string& from) {
        plugOnly({});
        loadImage();
        when(from, [this] { files.failure = "No space left on device"; });
        const auto outcome = start();
        EXPECT_EQ(outcome.end, RunEnd::updated);
        files.failure.clear();
        return joined(outcome.facts.remarks, "\n");
    };
    const auto entry = "The journal " + journal.path() + " could not be ";
    const auto cleared = entry +
                         "written (No space left on device): the next start still names this device, which is "
                         "well, until you have it forgotten.";
    EXPECT_EQ(remarks("Update Finish\r\n"), cleared);
    EXPECT_EQ(remarks("Erase Firmware..."),
              entry +
                  "kept up (No space left on device): had the program or the computer failed "
                  "meanwhile, the next start would not have known how far it came.\n" +
                  cleared);
}

TEST_F(Safety, AsksBeforeADeviceWouldBeForgotten) {
    plug();
    loadImage();
    files.failure = "No space left on device";
    std::string asked;
    bool agrees = false;
    face.onBox = [&](Question question, const std::string& text) {
        if (question != Question::noJournal) return true;
        asked = text;
        return agrees;
    };
    const auto refused = start();
    EXPECT_EQ(refused.end, RunEnd::notRemembered);
    EXPECT_EQ(refused.cause, journal.path() + ": No space left on device");
    EXPECT_NE(asked.find("could not be written: No space left on device.\r\n"), std::string::npos) << asked;
    EXPECT_EQ(device().log().switches, 0);
    agrees = true;
    const auto outcome = start();
    EXPECT_EQ(outcome.end, RunEnd::updated);
    ASSERT_EQ(outcome.facts.remarks.size(), 1U);
    EXPECT_EQ(outcome.facts.remarks[0].find("The journal " + journal.path() + " could not be written ("), 0U);
}

TEST_F(Safety, RemembersTheLastFilesThatExist) {
    std::vector<std::string> paths;
    StoredSettings recent(settings);
    for (const char* name : {"0", "1", "2", "3", "4", "5"}) paths.push_back(folder.folder.file(name, "x"));
    for (const int i : {0, 1, 2, 3, 4, 5, 2}) EXPECT_TRUE(recent.addRecentFile(paths[static_cast<std::size_t>(i)]));
    std::filesystem::remove(paths[4]);
    EXPECT_EQ(recent.recentFiles(), (std::vector<std::string>{paths[2], paths[5], paths[3], paths[1]}));
}

TEST_F(Safety, ThePasswordMovesIntoTheKeyringThatTakesIt) {
    StoredSettings stored(settings);
    const auto inFile = [this] { return settings.values["Corvane/FTP/Password"]; };
    const auto inKeyring = [this] { return settings.keyring.values[settings.file("Corvane")]; };
    const auto saves = [&](const std::string& password, bool isTyped = true) {
        Choices choices, loaded;
        stored.load(loaded);
        choices = loaded;
        if (isTyped) choices.password = password;
        EXPECT_TRUE(stored.save(choices, loaded));
        stored.load(loaded);
        EXPECT_EQ(loaded.password, password);
        return std::make_pair(inFile(), inKeyring());
    };
    using Places = std::pair<std::string, std::string>;
    EXPECT_EQ(saves("plain"), (Places{"plain", ""}));
    settings.keyring.isLocked = false;
    EXPECT_EQ(saves("plain", false), (Places{"", "plain"}));
    EXPECT_EQ(saves("other"), (Places{"", "other"}));
    settings.keyring.isLocked = true;
    EXPECT_EQ(saves("", false), (Places{"", "other"})) << "what cannot be read now is not forgotten";
    EXPECT_EQ(saves("newest"), (Places{"newest", "other"}));
    settings.keyring.isLocked = false;
    EXPECT_EQ(saves("newest", false), (Places{"", "newest"}));
    EXPECT_EQ(saves(""), (Places{"", ""}));
    settings.values["Corvane/FTP/Keyring"] = "False";
    EXPECT_EQ(saves("kept"), (Places{"kept", ""}));
}

TEST_F(Safety, RecordsEveryJob) {
    asksAfterwards(true);
    plug({.version = "=TARN-R200 \"A\", V5.1", .nextVersion = "TARN-R200 V5.2R1"});
    loadImage();
    EXPECT_EQ(updater.conclude(start()).kind, Verdict::Kind::updated);
    const auto sum = digest.sha256(kImage);
    const std::string line =
        "2026-11-24 14:02:07,COM1,\"'=TARN-R200 \"\"A\"\", V5.1\",TARN-R200 V5.2R1,local.hex," + sum + ",0,updated,";
    EXPECT_EQ(
        fakes::ScratchFolder::content(folder.dataPath() + "/jobs.csv"),
        "time,port,device before,device after,image,SHA-256,repeated records,verdict,signed by\r\n" + line + "\r\n");
    EXPECT_EQ(joined(jobFields(line), "|"),
              "2026-11-24 14:02:07|COM1|'=TARN-R200 \"A\", V5.1|TARN-R200 V5.2R1|local.hex|" + sum + "|0|updated|");
    face.closesSelection = true;
    EXPECT_EQ(updater.conclude(start()).kind, Verdict::Kind::untouched);
    EXPECT_EQ(updater.jobs().last(1),
              std::vector<std::string>{"2026-11-24 14:02:07,COM1,TARN-R200 V5.2R1,,,,0,untouched,"});
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

}  // namespace corvane::tests
