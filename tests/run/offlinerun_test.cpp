#include "RunBench.h"

namespace corvane {
namespace {

const std::string kChosen = "\f" + kFound + kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n";

class OfflineRun : public RunTest {};

TEST_F(OfflineRun, CarriesADeviceThroughAWholeUpdate) {
    models::DeviceOptions options;
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options);
    loadImage();
    const auto report = start();
    EXPECT_EQ(report.end, RunEnd::updated);
    EXPECT_EQ(log(), kChosen + kToIsp + kErased + kDone);
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(device().version(), "TARN-R200 V5.2R1");
    EXPECT_EQ(textOf(device().log().boot),
              "\r\x02X\r:0400100005060708D2\r:04002000090A0B0CB2\r:0400000001020304F2\r:00000001FF\r\x02R\r");
    EXPECT_EQ(face.events,
              (std::vector<std::string>{"running", "cancel on", "cancel off", "cancel off", "cancel off", "idle"}));
    EXPECT_EQ(face.phases,
              (std::vector<RunPhase>{RunPhase::scan, RunPhase::selection, RunPhase::image, RunPhase::bootLoader,
                                     RunPhase::erase, RunPhase::program, RunPhase::reset, RunPhase::idle}));
    EXPECT_TRUE(reader.calls.empty());
    EXPECT_FALSE(updater.serialPort().PortOpen());
    EXPECT_EQ(report.facts.deviceVersion + "|" + report.facts.port + "|" + report.facts.version,
              "TARN-R200 V5.1R23|COM1|V5.2R1");
}

TEST_F(OfflineRun, RepeatsWhatFailedAndNothingElse) {
    const std::map<char, std::string> texts = {{'e', "Erase Firmware... < NG\r\n"},
                                               {'E', kErased},
                                               {'p', "Programming... < NG\r\n"},
                                               {'P', kDone},
                                               {'1', "\r\niTry:1\r\n"},
                                               {'2', "\r\niTry:2\r\n"},
                                               {'3', "\r\niTry:3\r\n"}};
    const struct {
        std::initializer_list<std::string_view> faults;
        std::string log;  // small letters for what failed, digits for tries
        int erases, restarts;
        RunEnd end;
    } cases[] = {
        {{"erase-nak"}, "e1EP", 2, 1, RunEnd::updated},
        {{"erase-nakx*"}, "e1e2e3", 3, 0, RunEnd::eraseFailed},
        {{"nak@:04002000090A0B0CB2x3"}, "Ep1P", 1, 1, RunEnd::updated},
        {{"nak@:00000001FFx*"}, "Ep1p2p3", 1, 0, RunEnd::programmingFailed},
        {{"erase-nak", "nak@:04002000090A0B0CB2x3"}, "e1Ep2P", 2, 1, RunEnd::updated},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.log);
        plugOnly(one.faults);
        loadImage();
        EXPECT_EQ(start().end, one.end);
        auto wanted = kChosen + kToIsp;
        for (const char letter : one.log) wanted += texts.at(letter);
        EXPECT_EQ(log(), wanted);
        EXPECT_EQ(device().log().erases, one.erases);
        EXPECT_EQ(device().log().restarts, one.restarts);
        EXPECT_EQ(one.restarts ? memoryFault() : "", "");
    }
}

TEST_F(OfflineRun, EndsLessThanThreeSecondsAfterAnUnplugging) {
    const struct {
        const char* fault;
        RunEnd end;
    } cases[] = {
        {"unplug-byte@1", RunEnd::noDevice},          // looking for a prompt
        {"unplug-request@01", RunEnd::noDevice},      // asked for its version
        {"unplug-request@1f", RunEnd::lostInSwitch},  // asked to switch
        {"unplug-request@03", RunEnd::lostInSwitch},  // the password
        {"cut@5", RunEnd::lostInSwitch},              // the second switch
        {"cut@6", RunEnd::lostInSwitch},              // the prompt
        {"unplug-erase", RunEnd::lostInBootLoader},
        {"unplug@1", RunEnd::lostInBootLoader},
        {"unplug@:00000001FF", RunEnd::lostInBootLoader},
    };
    models::DeviceOptions options;
    options.password = "quill";
    for (const auto& one : cases) {
        SCOPED_TRACE(one.fault);
        plugOnly({one.fault}, options);
        loadImage();
        std::int64_t unplugged = -1;
        runtime.setPump([&] {
            if (unplugged < 0 && !device().isPlugged()) unplugged = runtime.ms();
        });
        EXPECT_EQ(start().end, one.end) << log();
        EXPECT_GE(unplugged, 0);
        EXPECT_LT(runtime.ms() - unplugged, 3000);
        EXPECT_FALSE(updater.serialPort().PortOpen());
    }
    EXPECT_TRUE(log().ends_with("iTry:2\r\nProgramming... < NG(The port was lost)\r\n\r\niTry:3\r\n")) << log();
}

TEST_F(OfflineRun, TakesABootLoaderOnlyWhenForcedAndAtAnyRate) {
    models::DeviceOptions options;
    options.startsInBoot = true;
    plug(options);
    loadImage();
    EXPECT_EQ(start().end, RunEnd::bootLoaderSeen);
    EXPECT_EQ(device().log().erases, 0);
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(log(),
              "\f\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\n"
              "Device F/W: Unknown Device\r\n\r\n" +
                  kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n\r\n[ISP Mode]\r\n" + kErased + kDone);
    EXPECT_EQ(memoryFault(), "");
    options.startsInBoot = false;
    options.bootBaud = 115200;
    plugOnly({}, options);
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

}  // namespace
}  // namespace corvane
