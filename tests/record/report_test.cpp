#include <filesystem>
#include <gtest/gtest.h>

#include "report/Explanation.h"
#include "support/Program.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string contentOf(const std::vector<ArchivedFile>& files) {
    std::string all;
    for (const auto& file : files) all += file.name + "\n" + file.content;
    return all;
}

/// What a report of this run holds, all files together.
std::string reportOf(fakes::AppBench& bench, bool isOnLine, std::string* account = nullptr) {
    fakes::Program program(bench);
    program.presenter.account("h", "osprey", "Pa55-wagtail");
    if (!isOnLine) program.loadImage();
    (void)program.updater.conclude(program.start());
    const auto files = program.updater.reports().files();
    std::string why;
    const auto report = RunReport::read(packed(files, why), why);
    EXPECT_TRUE(report) << why;
    if (account && report) *account = joined(accountOf(*report), "\n") + joined(bytesOf(*report), "\n");
    return contentOf(files);
}

/// Gives the password back behind its answer, as a device with an echo does.
class Echo : public models::Device {
public:
    using Device::Device;
    void hear(models::Micros now, const Bytes& bytes, std::uint32_t rate) override {
        Device::hear(now, bytes, rate);
        heard_ += textOf(bytes);
        const auto frame = heard_.find(std::string("\x01\0\x03", 3));
        if (frame == std::string::npos || heard_.size() < frame + 4 || heard_.size() < frame + 6 + heard_[frame + 3])
            return;
        echo_ = heard_.substr(frame + 4);
        heard_.clear();
    }
    Bytes speak(models::Micros now) override {
        auto said = Device::speak(now);
        if (!said.empty()) said.insert(said.end(), echo_.begin(), echo_.end());
        if (!said.empty()) echo_.clear();
        return said;
    }

private:
    std::string heard_, echo_;
};

TEST(Report, HoldsNoSecretOnAnyWayToLogIn) {
    // The device's passwords as text, as they are sent (each byte XOR the next), and in base64; then the account's.
    const std::vector<std::string> secrets = {
        "quill",
        std::string("\x04\x1C\x05\x00l", 5),
        "\\x04\\x1C\\x05\\x00l",
        "cXVpbGw=",
        "marten",
        "\x0C\x13\x06\x11\x0Bn",
        "\\x0C\\x13\\x06\\x11\\x0Bn",
        "bWFydGVu",
        "Pa55-wagtail",
        "UGE1NS13YWd0YWls",
    };
    for (const bool isOnLine : {false, true}) {
        for (const auto* password : {"quill", "marten"}) {
            for (const bool echoes : {false, true}) {
                fakes::AppBench bench;
                models::DeviceOptions options;
                options.password = password;
                models::Device plain(options);
                Echo echo(options);
                bench.serial.plug(1, echoes ? static_cast<models::Peer&>(echo) : plain);
                bench.face.answers = {"magpie", "marten"};
                bench.reader.answers = {
                    {"ftp://osprey:Pa55-wagtail@h",
                     {.failure = {ReadFailure::Kind::login, "530 no osprey with Pa55-wagtail here"}}}};
                std::string account;
                const auto report = reportOf(bench, isOnLine, &account);
                for (const auto& secret : secrets) {
                    EXPECT_EQ((report + account).find(secret), std::string::npos) << secret << password << echoes;
                }
                if (isOnLine) continue;
                EXPECT_NE(report.find("sent-secret"), std::string::npos);
                EXPECT_EQ(report.find("got-secret") != std::string::npos, echoes);
            }
        }
    }
}

TEST(Report, NamesTheCause) {
    const std::pair<const char*, const char*> rows[] = {
        {"nak@2x*",
         "Record 2 (record at 00000020, 4 bytes) was refused: it arrived damaged, or the device cannot store it. (9"},
        {"mute@2", "Record 2 (record at 00000020, 4 bytes) was not answered: it was lost, or its answer was."},
        {"repeat@8", "Record 4 (the end record) was answered 2 times"},
        {"dots@2", "Record 2 (record at 00000020, 4 bytes) was answered by what is no answer: ."},
        {"delay@8=400", "Record 4 (the end record) was answered late, after 0.4"},
        {"unplug@2", "COM1 vanished in the phase \"program\", after 2 records had been sent"},
        {"erase-nakx*", "The boot loader refused to erase. (3 times)"},
        {"erase-mutex*", "The erase was not answered, so the device may be empty or not. (3 times)"},
        {"erase-slow=7000", "The erase took 7.0"},
        {"refuse@1f=07", "The switch into the boot loader was refused (reply: refused, \\x07)."},
        {"deaf@1f", "The switch into the boot loader was not answered."},
        {"crc@1fx*", "The switch into the boot loader was answered by a reply that arrived damaged."},
        {"boot-deaf=60000", "After the switch the boot loader's prompt never came."},
        {"crc@01x*", "questions for the version at COM1 brought something that is no good reply"},
        {"deaf@01", "Nothing has answered any question for the version."},
        {"start-deaf=60000", "After the restart nothing was heard of the device."},
    };
    for (const auto& [fault, words] : rows) {
        fakes::AppBench bench;
        bench.asksAfterwards(true);
        models::DeviceOptions options;
        options.faults = {fault};
        bench.plug(options);
        std::string account;
        reportOf(bench, false, &account);
        const auto causes = account.substr(account.find("Why"), account.find("About") - account.find("Why"));
        EXPECT_NE(causes.find(words), std::string::npos) << fault << "\n" << account;
    }
    fakes::AppBench bench;
    bench.plug({});
    std::string account;
    reportOf(bench, false, &account);
    EXPECT_EQ(account.find("Why"), std::string::npos);
}

TEST(Report, OfARunThatWasCutOffIsInAFileUntilTheDeviceIsWell) {
    fakes::AppBench bench;
    bench.plug({.faults = {"unplug@2"}});
    fakes::Program program(bench);
    program.loadImage();
    auto& journal = program.updater.journal();
    const auto recorded = [&] { return readFile(journal.left().at(0).recording); };
    EXPECT_EQ(program.start().device, DeviceState::bootLoaderEmpty);
    std::string why;
    const auto report = RunReport::read(recorded(), why);
    ASSERT_TRUE(report) << why;
    EXPECT_EQ(report->events.back().bytes, "idle");
    EXPECT_NE(joined(accountOf(*report), "\n").find("COM1 vanished"), std::string::npos);
    const auto files = [&] { return std::distance(std::filesystem::directory_iterator(bench.folder.dataPath()), {}); };
    EXPECT_EQ(files(), 2);
    EXPECT_EQ(journal.forget(journal.left()), "");
    EXPECT_EQ(files(), 0);
}

TEST(Report, IsRefusedWhenItIsNone) {
    std::string why;
    const std::string recording = "corvane-recording 1\n12 sent COM1 \\x01A\n";
    const auto good = packed({{"recording.txt", recording}}, why);
    ASSERT_TRUE(RunReport::read(good, why)) << why;
    EXPECT_EQ(RunReport::read(good, why)->events.front(), (RecordedEvent{12, "sent", "COM1",
                                                                         "\x01"
                                                                         "A"}));
    auto damaged = good;
    damaged[45] = static_cast<char>(damaged[45] ^ 0x55);
    for (const auto& bytes :
         {std::string(), std::string("PK"), good.substr(0, good.size() / 2), damaged,
          packed({{"../recording.txt", recording}}, why), packed({{"/etc/recording.txt", recording}}, why),
          packed({{"about.txt", "x"}}, why), packed(std::vector<ArchivedFile>(33, {"a", ""}), why),
          std::string("corvane-recording 2\n"), recording + "x", recording + "13 sent COM1 \\x0G\n",
          recording + "-1 sent COM1\n", recording + "14 lost C\x1B[2J\n", recording + "14 phase run \x1B[2J\n",
          recording + "14 sent\n"}) {
        why.clear();
        EXPECT_FALSE(RunReport::read(bytes, why)) << bytes.substr(0, 60);
        EXPECT_NE(why, "");
    }
    const auto bomb = packed({{"recording.txt", std::string(100000, 'A')}}, why);
    EXPECT_FALSE(unpacked(bomb, why, {.files = 1, .bytes = 99999}));
    EXPECT_TRUE(unpacked(bomb, why, {.files = 1, .bytes = 100000}));
}

TEST(Report, OfALongRunForgetsTheBeginning) {
    Recording recording(200000);
    for (int i = 0; i < 3000; ++i) recording.add({i, "sent", "COM1", std::string(100, 'x')});
    const auto text = recording.text();
    std::string why;
    const auto events = parseRecording(text, why);
    ASSERT_TRUE(events) << why;
    EXPECT_LT(text.size(), 200100U);
    EXPECT_EQ(events->front().what, "forgotten");
    EXPECT_EQ(events->back().at, 2999);
}

}  // namespace
}  // namespace corvane
