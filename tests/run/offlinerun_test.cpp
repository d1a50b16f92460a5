#include "RunBench.h"

namespace corvane::tests {

const std::string kChosen = "\f" + kFound + kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n";

class OfflineRun : public RunTest {};

TEST_F(OfflineRun, CarriesADeviceThroughAWholeUpdate) {
    asksAfterwards(true);
    plugOnly({"nak@:0400100005060708D2"}, {.nextVersion = "TARN-R200 V5.2R1"});
    loadImage();
    const auto verdict = updater.conclude(start());
    EXPECT_EQ(verdict.kind, Verdict::Kind::updated);
    EXPECT_EQ(std::vector(verdict.facts.begin(), verdict.facts.end() - 1),
              (std::vector<std::string>{
                  "COM1: TARN-R200 V5.1R23 before the run.",
                  "Image: local.hex, TARN-R200 V5.2R1, 119 bytes, SHA-256 " + digest.sha256(kImage) + ".",
                  "The device now answers with TARN-R200 V5.2R1.", "1 record was repeated."}));
    EXPECT_EQ(verdict.unplugText(), "It is safe to unplug the device.");
    EXPECT_EQ(log(), kChosen + kToIsp + kErased + kDone);
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(textOf(device().log().boot),
              "\r\x02X\r:0400100005060708D2\r:0400100005060708D2\r:04002000090A0B0CB2\r:0400000001020304F2\r"
              ":00000001FF\r\x02R\r");
    EXPECT_EQ(face.events,
              (std::vector<std::string>{"running", "cancel on", "cancel off", "cancel off", "cancel off", "idle"}));
    EXPECT_EQ(face.phases, (std::vector<RunPhase>{RunPhase::scan, RunPhase::selection, RunPhase::image,
                                                  RunPhase::bootLoader, RunPhase::erase, RunPhase::program,
                                                  RunPhase::reset, RunPhase::proof, RunPhase::idle}));
    EXPECT_TRUE(reader.calls.empty());
    EXPECT_FALSE(updater.serialPort().PortOpen());
}

TEST_F(OfflineRun, LooksForAnswersAwakeUnlessTheBatteryIsToBeSpared) {
    for (const auto& [isOnBattery, spares, looks] :
         {std::tuple(false, "True", true), {true, "True", false}, {true, "False", true}}) {
        power.onBattery = isOnBattery;
        settings.before["Corvane/Update/SpareBattery"] = spares;
        plugOnly({});
        loadImage();
        runtime.expectNews(0);
        const auto before = runtime.expected();
        EXPECT_EQ(start().end, RunEnd::updated);
        EXPECT_EQ(runtime.expected() != before, looks) << isOnBattery << spares;
    }
}

TEST_F(OfflineRun, RepeatsWhatFailedAndNothingElse) {
    const std::string eraseFails = "Erase Firmware... < NG\r\n", fails = "Programming... < NG\r\n",
                      first = "\r\niTry:1\r\n", second = "\r\niTry:2\r\n", third = "\r\niTry:3\r\n",
                      twice = eraseFails + first + kErased + fails + second + kDone;
    const std::tuple<models::Faults, std::string, int, int, RunEnd> cases[] = {
        {{"erase-nak"}, eraseFails + first + kErased + kDone, 2, 1, RunEnd::updated},
        {{"erase-nakx*"}, eraseFails + first + eraseFails + second + eraseFails + third, 3, 0, RunEnd::eraseFailed},
        {{"nak@:00000001FFx*"},
         kErased + fails + first + fails + second + fails + third,
         1,
         0,
         RunEnd::programmingFailed},
        {{"erase-nak", "nak@:04002000090A0B0CB2x3"}, twice, 2, 1, RunEnd::updated},
    };
    for (const auto& [faults, logged, erases, restarts, end] : cases) {
        plugOnly(faults);
        loadImage();
        EXPECT_EQ(start().end, end);
        EXPECT_EQ(log(), kChosen + kToIsp + logged);
        EXPECT_EQ(device().log().erases, erases);
        EXPECT_EQ(device().log().restarts, restarts);
        EXPECT_EQ(restarts ? memoryFault() : "", "");
    }
}

TEST_F(OfflineRun, EndsLessThanThreeSecondsAfterAnUnpluggingAndWorksAgainAfterwards) {
    const struct {
        const char* fault;
        std::uint8_t muted;  // or the reader is unplugged while this command of its own is not answered
        RunEnd end;
    } cases[] = {
        {"unplug-request@01", 0, RunEnd::noDevice},      // asked for its version
        {"unplug-request@1f", 0, RunEnd::lostInSwitch},  // asked to switch
        {"unplug-request@03", 0, RunEnd::lostInSwitch},  // the password
        {"cut@6", 0, RunEnd::lostInSwitch},              // the prompt
        {"unplug-erase", 0, RunEnd::lostInBootLoader},
        {"unplug@1", 0, RunEnd::lostInBootLoader},
        {"", 203, RunEnd::noPortOpened},
        {"", 4, RunEnd::lostInSwitch},
    };
    for (int i = 0; i < 2 * static_cast<int>(std::size(cases)); ++i) {
        const auto& one = cases[i / 2];
        const bool isHid = i % 2;
        SCOPED_TRACE(one.fault + std::string(isHid ? ", HID " : "") + std::to_string(one.muted));
        if (one.muted && !isHid) continue;
        isHid ? plugBehindReader({}, {.password = "quill"}, {.mutes = {one.muted}})
              : static_cast<void>(plugOnly({}, {.password = "quill"}));
        if (*one.fault) device().faults().add(one.fault);
        loadImage();
        std::optional<std::int64_t> unplugged;
        runtime.setPump([&] {
            const bool isAsked =
                one.muted && !behind->reader.commands().empty() && behind->reader.commands().back()[0] == one.muted;
            if (unplugged || !(isAsked || !device().isPlugged())) return;
            unplugged = runtime.ms();
            unplugReader();
        });
        EXPECT_EQ(start().end, one.end) << log();
        EXPECT_LT(runtime.ms() - unplugged.value(), 3000);
        EXPECT_TRUE(one.end != RunEnd::lostInBootLoader || log().ends_with("\r\n\r\niTry:3\r\n")) << log();
        EXPECT_FALSE(updater.serialPort().PortOpen() || bus.openDevices());
        device().plugIn(runtime.micros());
        if (isHid) {
            behind->reader.restart();
            behind->reader.options().mutes.clear();
            behind->plug(bus, "/dev/hidraw0");
        }
        EXPECT_EQ(start(true).end, RunEnd::updated) << log();
        EXPECT_EQ(memoryFault(), "");
    }
}

/// A serial boot loader is passed by; the reader is told that it is over after the device.
TEST_F(OfflineRun, TellsADeviceBehindAReaderThatTookAPasswordThatTheSessionEnds) {
    const std::tuple<std::optional<std::string>, const char*, std::vector<int>> cases[] = {
        {std::nullopt, "deaf@05", {0x01, 0x1F}},
        {"quill", "deaf@05", {0x01, 0x1F, 0x00, 0x03, 0x1F, 0x04}},
        {"quill", "deaf@04", {0x01, 0x1F, 0x00, 0x03, 0x1F, 0x04}},  // takes 3 s more
    };
    const Bytes rate{1, 4, 0, 0, 0x4B, 0};  // 19200 at opening, and as the scan's first setting
    std::vector<std::int64_t> ends = {runtime.ms()};
    for (const auto& [password, fault, expected] : cases) {
        plugBehindReader({fault}, {.password = password});
        plug({.kind = models::Kind::boot}, 3);
        loadImage();
        EXPECT_EQ(start().end, RunEnd::updated);
        EXPECT_EQ(face.panel.front(), "show ,COM3,HID1,");
        std::vector<int> functions;
        for (const auto& request : device().log().requests) functions.push_back(request.function);
        EXPECT_EQ(functions, expected);
        EXPECT_EQ(behind->reader.commands(), std::vector<Bytes>({{203, 0}, rate, {5, 0}, rate, {4, 0}, {3, 1, 3}}));
        ends.push_back(runtime.ms());
    }
    EXPECT_NEAR(static_cast<double>(ends[3] - 2 * ends[2] + ends[1]), 3000, 100);
}

/// One that answers no command is asked three times for a setting, and once more at closing.
TEST_F(OfflineRun, IsCancelledWithoutWaitingForAReader) {
    plugBehindReader({}, {}, {.mutes = {1, 3, 5}});
    loadImage();
    std::optional<std::int64_t> cancelledAt;
    runtime.setPump([&] {
        const auto& sent = behind->reader.commands();
        if (cancelledAt || std::count(sent.begin(), sent.end(), Bytes{1, 4, 0, 0, 0x4B, 0}) < 2) return;
        cancelledAt = runtime.ms();
        presenter.cmdCancel_Click();
    });
    EXPECT_EQ(start().end, RunEnd::cancelled);
    EXPECT_LT(runtime.ms() - cancelledAt.value(), 1300);
}

TEST_F(OfflineRun, TakesABootLoaderOnlyWhenForcedAndAtAnyRate) {
    plug({.startsInBoot = true});
    loadImage();
    EXPECT_EQ(start().end, RunEnd::bootLoaderSeen);
    EXPECT_EQ(device().log().erases, 0);
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(log(),
              "\f\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\n"
              "Device F/W: Unknown Device\r\n\r\n" +
                  kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n\r\n[ISP Mode]\r\n" + kErased + kDone);
    EXPECT_EQ(memoryFault(), "");
    plugOnly({}, {.bootBaud = 115200});
    updater.session().ispBaudRate = 38400;  // what an earlier run left
    EXPECT_EQ(start().end, RunEnd::updated);
}

TEST_F(OfflineRun, OffersWhatLiesInTheDownloadFolder) {
    plug();
    presenter.optLine_Click(true);
    const std::string section = "]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=two\\nlines\nISP_BAUDRATE=19200\nFILE=";
    write("firmware.inf", "[PGM_A" + section + "/f/none.hex\n[PGM_B" + section + "/f/here.hex\n[PGM_C" + section +
                              "x\\HERE.hex\n[PGM_D" + section + "../..\n[PGM_E" + section + "here.hex\n");
    write("Download/Here.HEX", kImage);
    face.selects = "PGM_B";
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(face.offered, (std::vector<std::string>{"PGM_B - TARN-R200", "PGM_C - TARN-R200", "PGM_E - TARN-R200"}));
    EXPECT_EQ(log(), "\f" + kFound + kOffer + "two\r\nlines\r\n\r\n" + kToIsp + kErased + kDone);
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(settings.values["Corvane/Query/LastROM"], "PGM_B");
}

TEST_F(OfflineRun, IsCancelledBeforeAndInItsSelection) {
    plug();
    loadImage();
    face.onSelection = [this] { presenter.cmdCancel_Click(); };
    EXPECT_EQ(start().end, RunEnd::cancelled);
    EXPECT_EQ(log(), kChosen + "Firmware download fail!!\r\n");
    face.offered.clear();
    when("[Local Site]\r\n", [this] { presenter.cmdCancel_Click(); });  // too late for the scan
    EXPECT_EQ(start().end, RunEnd::cancelled);
    EXPECT_EQ(log(), "\f" + kFound + "Cancel Update!!!\r\n");
    EXPECT_TRUE(face.offered.empty());
    EXPECT_EQ(device().log().switches, 0);
}

TEST_F(OfflineRun, IsLeftAloneWhileItProgramsAndLeavesOrderBehindWhateverHappens) {
    plug();
    loadImage();
    RunEnd second = RunEnd::failed;
    face.onText = [&](const std::string& text) {
        if (text == "Erase Firmware...") second = presenter.start(true).end;
        if (text != "Programming...") return;
        presenter.cmdCancel_Click();
        presenter.optLine_Click(false);
        presenter.optLast_Click();
    };
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(second, RunEnd::alreadyRunning);
    EXPECT_EQ(device().log().erases + device().log().restarts, 2);
    EXPECT_TRUE(presenter.choices().isLocalFile());
    when("[Local Site]\r\n", [] { throw std::runtime_error("no memory"); });
    EXPECT_EQ(start().cause, "no memory");
    EXPECT_FALSE(updater.serialPort().PortOpen());
    EXPECT_EQ(face.events.back(), "idle");
    face.onText = nullptr;
    EXPECT_EQ(start().end, RunEnd::updated);
}

}  // namespace corvane::tests
