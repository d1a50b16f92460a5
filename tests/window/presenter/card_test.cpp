#include <gtest/gtest.h>

#include "support/Program.h"
#include "window/presenter/PasswordRemark.h"

namespace corvane::tests {

using fakes::kImage;

/// "tone headline|start|force", with "!" in front of what is to be pressed.
std::string told(const Card& card) {
    static const char* const tones[] = {"plain ", "busy ", "good ", "caution ", "danger "};
    return tones[static_cast<int>(card.tone)] + card.headline + "|" + (card.callsForForce ? "" : "!") + card.start +
           "|" + (card.callsForForce ? "!" : "") + card.force;
}

Verdict verdictOf(RunEnd end, DeviceState device) {
    Outcome outcome;
    outcome.end = end;
    outcome.device = device;
    return verdictFor(outcome);
}

TEST(Card, SaysHowThingsStandAndWhatIsNext) {
    fakes::FakeDigest digest;
    const Image good("/i/r200.hex", kImage, digest), bare("/i/a&b.hex", ":0400000001020304F2\n:00000001FF\n", digest),
        torn("/i/torn.hex", "[INFO]\nPGM=P\n:0400000001020304F3\n:00000001FF\n", digest);
    const InterruptedRun left{"2026-11-24 14:02:07", "COM3", "TARN V5.1R23", "/i/r200.hex"};
    const std::string kSearch = "|!&Search for the device|Fo&rce ISP",
                      kRescue = "|&Search for the device|!&Rescue with r200.hex";
    const auto local = [](Choices& c, const Image& image) { c.offLine = c.useFile = true, c.image = image; };
    const struct {
        std::function<void(WindowState&, Choices&)> change;
        std::string told;
        const char* below = nullptr;  ///< a part of what stands below
    } cases[] = {
        {[](auto&, auto&) {}, "plain Ready. Nothing is installed before you agree." + kSearch},
        {[](auto& s, auto&) { s.hasPorts = false; }, "plain Plug in your device." + kSearch},
        {[](auto& s, auto&) { s.asksForAccount = true; }, "plain Enter the account for the maker's site." + kSearch,
         "ftp.corvane.example is an example host: ask your device's maker for server, user name and password."},
        {[](auto& s, auto& c) { c.offLine = true, s.hasOffer = false; },
         "caution There is no firmware on this computer yet." + kSearch, "Go on line once, or choose a local file."},
        {[&](auto&, auto& c) { local(c, {}); }, "plain Choose the file to install, or drop it here." + kSearch},
        {[&](auto&, auto& c) { local(c, good); },
         "plain Ready. Nothing is installed before you agree.|!In&stall V5.2R1|Fo&rce ISP"},
        {[&](auto&, auto& c) { local(c, bare); },
         "plain Ready. Nothing is installed before you agree.|!In&stall a&&b.hex|Fo&rce ISP"},
        {[&](auto&, auto& c) { local(c, torn); }, "caution torn.hex does not add up.|!In&stall torn.hex|Fo&rce ISP",
         "line 3 has a wrong checksum"},
        {[&](auto&, auto& c) {
             local(c, good), c.refusal = {"/i/b.txt", {ImageProblem::Kind::empty, "holds none"}};
         },
         "caution b.txt cannot be installed.|!In&stall V5.2R1|Fo&rce ISP",
         "The file holds none.\nr200.hex is still the one to be installed."},
        {[](auto& s, auto&) { s.isRunning = true, s.phase = RunPhase::image; },
         "busy Nothing on the device has changed yet." + kSearch},
        {[](auto& s, auto&) { s.isRunning = true, s.phase = RunPhase::erase; },
         "caution Do not unplug the device, and do not switch it or this computer off." + kSearch},
        {[](auto& s, auto&) { s.isRunning = true, s.phase = RunPhase::removal, s.updated = 3; },
         "good The device is updated. Take it off and connect the next one." + kSearch,
         "3 devices are updated.\nThe next"},
        {[](auto& s, auto&) { s.isRunning = true, s.phase = RunPhase::nextDevice, s.updated = 1; },
         "plain Connect the next device." + kSearch, "1 device is updated.\nIt is updated"},
        {[](auto& s, auto&) { s.verdict = verdictOf(RunEnd::updated, DeviceState::application); },
         "good The device is updated.|!Ne&xt device|Fo&rce ISP", "It is safe to unplug the device."},
        {[](auto& s, auto&) { s.verdict = verdictOf(RunEnd::notConfirmed, DeviceState::application); },
         "caution The device is programmed and runs. Its version is not confirmed." + kSearch,
         "1. Switch the device off and on"},
        {[](auto& s, auto&) { s.verdict = verdictOf(RunEnd::cancelled, DeviceState::none); },
         "plain The device was not changed." + kSearch},
        {[](auto& s, auto&) {
             s.verdict = verdictOf(RunEnd::programmingFailed, DeviceState::bootLoaderEmpty);
             s.rescueImage = "/i/r200.hex";
         },
         "danger The device waits in its boot loader. It has no working firmware yet." + kRescue,
         "2. Press \"Rescue with r200.hex\" to force an update with the same image."},
        {[&](auto& s, auto&) {
             s.left = {left}, s.rescueImage = left.image;
             s.verdict = verdictOf(RunEnd::noDevice, DeviceState::none);
         },
         "danger A device was left in its boot loader, without working firmware." + kRescue,
         "No device was found; nothing was changed.\nNo device answered on any port.\n"
         "2026-11-24 14:02: COM3, TARN V5.1R23, r200.hex\n1. Connect the device"},
        {[&](auto& s, auto&) { s.left.assign(5, left), s.rescueImage = left.image; },
         "danger 5 devices were left in their boot loaders, without working firmware." + kRescue, ", and 2 more\n1."},
    };
    for (const auto& one : cases) {
        WindowState state;
        Choices choices;
        one.change(state, choices);
        const auto card = cardFor(state, choices);
        EXPECT_EQ(told(card), one.told);
        const auto below = card.textBelow();
        EXPECT_TRUE(!one.below || below.find(one.below) != std::string::npos) << one.told << "\n" << below;
        const bool isAboutNothing = state.verdict && state.verdict->kind == Verdict::Kind::untouched;
        EXPECT_TRUE(!isAboutNothing || below.find("safe to unplug") == std::string::npos) << below;
    }
    EXPECT_EQ(passwordRemark(1).find("The device did not take that password."), 0u);
    EXPECT_EQ(passwordRemark(0), "The device asks for its own password, not for the one of the site.");
}

struct SituationTest : ::testing::Test, protected fakes::AppBench, protected fakes::Program {
    SituationTest() : fakes::Program(static_cast<fakes::AppBench&>(*this)) {}

    Verdict run(bool force = false) {
        outcome = start(force);
        return presenter.conclude(outcome);
    }
    Card card() { return presenter.situation().card(); }

    Outcome outcome;
};

TEST_F(SituationTest, AnAlarmOutlivesARunThatFindsNothingAndEndsWithTheRescue) {
    auto& device = plug();
    device.faults().add("nak@2x*");
    loadImage();
    run();
    presenter.optLine_Click(false);  // what is chosen anew does not end it
    EXPECT_EQ(card().headline, "The device waits in its boot loader. It has no working firmware yet.");
    presenter.optLine_Click(true);
    presenter.optLast_Click();
    serial.control.markBusy(1);
    run();
    EXPECT_EQ(told(card()),
              "danger A device was left in its boot loader, without working firmware.|&Search for the "
              "device|!&Rescue with local.hex");
    serial.control.markBusy(1, false);
    device.faults() = {};
    presenter.takeRescueImage();
    run(true);
    EXPECT_EQ(told(card()), "good The device is updated.|!Ne&xt device|Fo&rce ISP");
    presenter.loadFile(folder.folder.at("local.hex"));
    EXPECT_EQ(card().headline, "Ready. Nothing is installed before you agree.");
}

/// Killed with two devices at work, one after the other, each with its own image; then started anew.
TEST_F(SituationTest, RescuesEachOfTwoLostDevicesWithItsOwnImageWhereverItIs) {
    const auto r200 = folder.folder.file("r200.hex", kImage), r300 = folder.folder.file("r300.hex", kImage);
    processes.others = {{7, "then"}};
    for (const auto& [port, image] : {std::pair("COM1", r200), {"COM2", r300}}) {
        processes.self = {7, "then"};
        ASSERT_EQ(RunJournal(folder, files, processes).begin({"2026-11-24 14:02:07", port, "R V1", image}, false), "");
    }
    processes.self = {1, "now"}, processes.others.clear();
    models::DeviceOptions options;
    options.startsInBoot = true;
    const auto &first = plug(options), &second = plug(options, 2);
    std::string asked;
    face.onBox = [&](Question question, const std::string& text) {
        return question == Question::otherDevices ? asked = text, false : true;
    };
    presenter.situation().look();
    EXPECT_EQ(card().force, "&Rescue with r300.hex");
    const auto rescue = [this] { return presenter.takeRescueImage(), run(true).kind; };
    serial.control.markBusy(2);  // the other one is found, which waits for another image
    EXPECT_EQ(rescue(), VerdictKind::untouched);
    EXPECT_EQ(asked,
              "The device that was left at 2026-11-24 14:02: COM1, R V1, waits for r200.hex. r300.hex is the image of "
              "another one.\r\nInstall it all the same?");
    serial.control.markBusy(2, false);
    EXPECT_EQ(rescue(), VerdictKind::updated);
    EXPECT_EQ(first.log().erases * 10 + second.log().erases, 1);
    EXPECT_EQ(card().force, "&Rescue with r200.hex");
    serial.map.entries.clear();  // the first one is at another port now
    options.version = "moved";
    const auto& moved = plug(options, 3);
    EXPECT_EQ(rescue(), VerdictKind::updated);
    EXPECT_EQ(moved.log().erases, 1);
    EXPECT_EQ(told(card()), "good The device is updated.|!Ne&xt device|Fo&rce ISP");
}

TEST_F(SituationTest, WhatIsPluggedInEndsWhatWasSaidOfTheLastRun) {
    presenter.lookAtPorts();
    EXPECT_EQ(card().headline, "Plug in your device.");
    loadImage();
    run();
    EXPECT_EQ(card().headline, "No device was found; nothing was changed.");
    inspector.adapters["/dev/ttyS1"] = {"USB-Serial Controller", "A9001", "1-2"};
    inspector.forbidden.insert("/dev/ttyS1");
    plug();
    presenter.lookAtPorts();
    EXPECT_EQ(card().headline, "Ready. Nothing is installed before you agree.");
    const auto& row = updater.portList().rows().at(0);
    EXPECT_EQ(row.text(), "COM1  USB-Serial Controller, A9001  /dev/ttyS1");
    EXPECT_EQ(row.problem, "you may not open it: it belongs to the group dialout");
    inspector.forbidden.clear();
    inspector.holders["/dev/ttyS1"] = {4711, "minicom"};
    presenter.lookAtPorts();
    EXPECT_EQ(updater.portList().rows().at(0).problem, "in use by minicom (process 4711)");
    const auto file = folder.folder.file("bad.hex", "no record\n");
    presenter.optLine_Click(false);
    presenter.dropFile(file);
    EXPECT_EQ(card().headline + (presenter.choices().offLine ? "off" : "on"), "bad.hex cannot be installed.on");
    presenter.optFile_Walked();  // which asks for no file
    EXPECT_EQ(presenter.choices().image.name(), "local.hex");
}

TEST_F(SituationTest, OnlySettingsThatWereChangedAreWritten) {
    presenter.account("fw.example", "J", "");
    settings.values["Corvane/FTP/UserName"] = "another copy's";
    settings.values["Corvane/FTP/Password"] = "new";
    EXPECT_TRUE(presenter.unload());
    EXPECT_EQ(settings.values, (std::map<std::string, std::string>{{"Corvane/FTP/Password", "new"},
                                                                   {"Corvane/FTP/Server", "fw.example"},
                                                                   {"Corvane/FTP/UserName", "J"}}));
}

}  // namespace corvane::tests
