#include "RunBench.h"

namespace corvane {
namespace {

const std::string kToIsp = std::string("\f") + kFound + kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n" + kGoTo + kIsp;

class OfflineRun : public RunTest {};

TEST_F(OfflineRun, CarriesADeviceThroughAWholeUpdate) {
    models::DeviceOptions options;
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options);
    loadImage();
    const auto report = start();
    EXPECT_EQ(report.end, RunEnd::updated);
    EXPECT_EQ(log(), kToIsp + "Erase Firmware... < OK\r\nProgramming... < OK\r\nUpdate Finish\r\n");
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(device().version(), "TARN-R200 V5.2R1");
    EXPECT_EQ(textOf(device().log().boot),
              "\r\x02X\r:0400100005060708D2\r:04002000090A0B0CB2\r:0400000001020304F2\r:00000001FF\r\x02R\r");
    EXPECT_EQ(bench.face.events,
              (std::vector<std::string>{"running", "cancel on", "cancel off", "cancel off", "cancel off", "idle"}));
    EXPECT_EQ(bench.face.phases,
              (std::vector<RunPhase>{RunPhase::scan, RunPhase::selection, RunPhase::image, RunPhase::bootLoader,
                                     RunPhase::erase, RunPhase::program, RunPhase::reset, RunPhase::idle}));
    EXPECT_TRUE(bench.reader.calls.empty());
    EXPECT_FALSE(updater.serialPort().PortOpen());
    EXPECT_EQ(report.deviceVersion + "|" + report.port + "|" + report.version, "TARN-R200 V5.1R23|COM1|V5.2R1");
}

TEST_F(OfflineRun, RepeatsWhatFailedAndNothingElse) {
    struct Case {
        const char* name;
        std::vector<std::string_view> faults;
        std::string log;
        RunEnd end;
        int erases;
        int restarts;
    };
    const std::string erased = "Erase Firmware... < OK\r\n", notErased = "Erase Firmware... < NG\r\n";
    const std::string done = "Programming... < OK\r\nUpdate Finish\r\n", failed = "Programming... < NG\r\n";
    const auto again = [](int n) { return "\r\niTry:" + std::to_string(n) + "\r\n"; };
    const Case cases[] = {
        {"erase once", {"erase-nak"}, notErased + again(1) + erased + done, RunEnd::updated, 2, 1},
        {"erase always",
         {"erase-nakx*"},
         notErased + again(1) + notErased + again(2) + notErased + again(3),
         RunEnd::programmingFailed,
         3,
         0},
        {"program once", {"nak@:04002000090A0B0CB2x3"}, erased + failed + again(1) + done, RunEnd::updated, 1, 1},
        {"program always",
         {"nak@:00000001FFx*"},
         erased + failed + again(1) + failed + again(2) + failed + again(3),
         RunEnd::programmingFailed,
         1,
         0},
        {"both",
         {"erase-nak", "nak@:04002000090A0B0CB2x3"},
         notErased + again(1) + erased + failed + again(2) + done,
         RunEnd::updated,
         2,
         1},
    };
    for (const auto& one : cases) {
        devices.clear();
        bench.serial.map.entries.clear();
        models::DeviceOptions options;
        for (const auto fault : one.faults) options.faults.add(fault);
        plug(options);
        loadImage();
        const auto report = start();
        EXPECT_EQ(report.end, one.end) << one.name;
        EXPECT_EQ(log(), kToIsp + one.log) << one.name;
        EXPECT_EQ(device().log().erases, one.erases) << one.name;
        EXPECT_EQ(device().log().restarts, one.restarts) << one.name;
        if (one.end == RunEnd::updated) EXPECT_EQ(memoryFault(), "") << one.name;
        updater.session().rememberedPort.clear();
    }
}

TEST_F(OfflineRun, TakesABootLoaderOnlyWhenForced) {
    models::DeviceOptions options;
    options.startsInBoot = true;
    plug(options);
    loadImage();
    EXPECT_EQ(start().end, RunEnd::noDevice);
    EXPECT_EQ(log(),
              "\f\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1, In ISP Mode!!\r\n"
              "Can not found any device on comm port!!\r\n");
    EXPECT_EQ(device().log().erases, 0);
    EXPECT_EQ(start(true).end, RunEnd::updated);
    EXPECT_EQ(log(),
              std::string("\f\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\n"
                          "Device F/W: Unknown Device\r\n\r\n") +
                  kOffer +
                  "TARN-R200 V5.2R1(2024/01/31)\r\n\r\n\r\n[ISP Mode]\r\nErase Firmware... < OK\r\n"
                  "Programming... < OK\r\nUpdate Finish\r\n");
    EXPECT_EQ(bench.face.offered, std::vector<std::string>{"*TARN-R200 - TARN-R200"});
    EXPECT_EQ(memoryFault(), "");
}

TEST_F(OfflineRun, TriesTheBootLoaderAt115200ForAnImageThatNamesNoRate) {
    models::DeviceOptions options;
    options.bootBaud = 115200;
    plug(options);
    loadImage();
    updater.session().ispBaudRate = 38400;  // what an earlier run left
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(memoryFault(), "");
}

TEST_F(OfflineRun, OffersWhatLiesInTheDownloadFolder) {
    plug();
    presenter.optLine_Click(true);
    const std::string section = "]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=two\\nlines\nISP_BAUDRATE=19200\nFILE=";
    EXPECT_EQ(start().end, RunEnd::nothingListed);
    EXPECT_EQ(log(), std::string("\f") + kFound + "Firmware file(s) not found !!!\r\n");
    bench.write("firmware.inf", "[PGM_A" + section + "/f/none.hex\n[PGM_B" + section + "/f/here.hex\n[PGM_C" + section +
                                    "x\\HERE.hex\n[PGM_D" + section + "../..\n[PGM_E" + section + "here.hex\n");
    bench.write("Download/Here.HEX", kImage);
    bench.face.selects = "PGM_B";
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(bench.face.offered,
              (std::vector<std::string>{"PGM_B - TARN-R200", "PGM_C - TARN-R200", "PGM_E - TARN-R200"}));
    EXPECT_EQ(log(), std::string("\f") + kFound + kOffer + "two\r\nlines\r\n\r\n" + kGoTo + kIsp +
                         "Erase Firmware... < OK\r\nProgramming... < OK\r\nUpdate Finish\r\n");
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(bench.settings.values["Corvane/Query/LastROM"], "PGM_B");
    bench.face.selects = "PGM_C";  // its own name holds a separator: nothing is fetched by it
    EXPECT_EQ(start().end, RunEnd::imageMissing);
    EXPECT_NE(log().find("\r\n\r\nFirmware download fail!!\r\n"), std::string::npos);
}

TEST_F(OfflineRun, EndsWithoutTouchingTheDevice) {
    plug();
    loadImage("[INFO]\nPGM=ZETA\nVER=V1\n:00000001FF\n");
    EXPECT_EQ(start().end, RunEnd::nothingSuitable);
    EXPECT_EQ(log(), std::string("\f") + kFound + "Firmware not found!!!\r\n");
    loadImage();
    bench.face.closesSelection = true;
    EXPECT_EQ(start().end, RunEnd::declined);
    EXPECT_EQ(log(), std::string("\f") + kFound + "Cancel Update!!!\r\n");
    bench.face.closesSelection = false;
    bench.face.agrees = false;
    EXPECT_EQ(start().end, RunEnd::declined);
    bench.face.agrees = true;
    std::filesystem::remove(presenter.choices().image.path);
    EXPECT_EQ(start().end, RunEnd::imageMissing);
    EXPECT_EQ(device().log().switches, 0);
}

TEST_F(OfflineRun, IsCancelledUntilTheImageIsThere) {
    plug();
    loadImage();
    bench.face.onSelection = [this] { presenter.cmdCancel_Click(); };
    auto report = start();
    EXPECT_EQ(report.end, RunEnd::imageMissing);
    EXPECT_TRUE(report.cancelled);
    EXPECT_EQ(log(),
              std::string("\f") + kFound + kOffer + "TARN-R200 V5.2R1(2024/01/31)\r\n\r\nFirmware download fail!!\r\n");
    EXPECT_EQ(device().log().switches, 0);
    bench.face.onSelection = nullptr;
    bench.face.onText = [this](const std::string& text) {
        if (text == "Programming...") presenter.cmdCancel_Click();
    };
    report = start();
    EXPECT_EQ(report.end, RunEnd::updated);
    EXPECT_FALSE(report.cancelled);
}

TEST_F(OfflineRun, RunsOnlyOnce) {
    plug();
    loadImage();
    RunEnd second = RunEnd::failed;
    bench.face.onText = [&](const std::string& text) {
        if (text == "Erase Firmware...") second = presenter.start(true).end;
    };
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(second, RunEnd::alreadyRunning);
    EXPECT_EQ(device().log().erases, 1);
}

TEST_F(OfflineRun, LeavesOrderBehindWhateverHappens) {
    plug();
    loadImage();
    bench.face.onText = [](const std::string& text) {
        if (text == "[Local Site]\r\n") throw std::runtime_error("no memory");
    };
    const auto report = start();
    EXPECT_EQ(report.end, RunEnd::failed);
    EXPECT_EQ(report.failure, "no memory");
    EXPECT_FALSE(updater.serialPort().PortOpen());
    EXPECT_EQ(bench.face.events.back(), "idle");
    bench.face.onText = nullptr;
    EXPECT_EQ(start().end, RunEnd::updated);
}

/// One unplugging in the course of a run.
struct Unplugging {
    const char* fault;
    RunEnd end;
    const char* lastWords;
};

class Unplugged : public RunTest, public ::testing::WithParamInterface<Unplugging> {};

TEST_P(Unplugged, EndsTheRunInLessThanThreeSeconds) {
    models::DeviceOptions options;
    options.password = "quill";
    options.faults.add(GetParam().fault);
    plug(options);
    loadImage();
    std::int64_t unplugged = -1;
    bench.runtime.setPump([&] {
        if (unplugged < 0 && !device().isPlugged()) unplugged = bench.runtime.ms();
    });
    const auto report = start();
    EXPECT_EQ(report.end, GetParam().end);
    EXPECT_EQ(log().substr(log().size() - std::min(log().size(), std::string(GetParam().lastWords).size())),
              GetParam().lastWords);
    ASSERT_GE(unplugged, 0);
    EXPECT_LT(bench.runtime.ms() - unplugged, 3000);
    EXPECT_FALSE(updater.serialPort().PortOpen());
}

const char kNoDevice[] = ", No Device!!\r\nCan not found any device on comm port!!\r\n";
const char kNoIsp[] = "GoTo ISP Mode (TarnPlus Protocol)... < NG\r\nCan't enter ISP Mode!!\r\n";
const char kNoPrompt[] = "GoTo ISP Mode (TarnPlus Protocol)... < OK\r\nCan't enter ISP Mode!!\r\n";
const char kNoErase[] = "iTry:2\r\nErase Firmware... < NG\r\n\r\niTry:3\r\n";
const char kNoProgram[] = "iTry:2\r\nProgramming... < NG(The port was lost)\r\n\r\niTry:3\r\n";

INSTANTIATE_TEST_SUITE_P(
    Steps, Unplugged,
    ::testing::Values(Unplugging{"unplug-byte@1", RunEnd::noDevice, kNoDevice},       // looking for a prompt
                      Unplugging{"unplug-request@01", RunEnd::noDevice, kNoDevice},   // asked for its version
                      Unplugging{"unplug-request@1f", RunEnd::noBootLoader, kNoIsp},  // asked to switch
                      Unplugging{"unplug-request@00", RunEnd::noBootLoader, kNoIsp},  // the login begins
                      Unplugging{"unplug-request@03", RunEnd::noBootLoader, kNoIsp},  // the password
                      Unplugging{"cut@5", RunEnd::noBootLoader, kNoIsp},              // the second switch
                      Unplugging{"cut@6", RunEnd::noBootLoader, kNoPrompt},           // the prompt
                      Unplugging{"unplug-erase", RunEnd::programmingFailed, kNoErase},
                      Unplugging{"unplug@1", RunEnd::programmingFailed, kNoProgram},
                      Unplugging{"unplug@:0400000001020304F2", RunEnd::programmingFailed, kNoProgram},
                      Unplugging{"unplug@:00000001FF", RunEnd::programmingFailed, kNoProgram}));

}  // namespace
}  // namespace corvane
