#include "HidRun.h"
#include "console/Console.h"

namespace corvane {
namespace {

using Frames = std::vector<Bytes>;

const std::string kOpened = "\f\fOpen HID1 ... < OK\r\n   Scan by 19200,N,8,1";
const std::string kFound =
    kOpened + "\f[Local Site]\r\nComm Port : HID1 (F/W:KESTREL V2.4)\r\nDevice F/W: TARN-R200 V5.1R23\r\n\r\n";
const std::string kToIsp = kFound +
                           "[FTP Site]\r\nProduct   : TARN-R200\r\nVersion   : V5.2R1\r\n\r\n[Update Information]\r\n"
                           "TARN-R200 V5.2R1(2024/01/31)\r\n\r\nGoTo ISP Mode (TarnPlus Protocol)...";
const std::string kInIsp = kToIsp + " < OK\r\n\r\n[ISP Mode]\r\nErase Firmware...";
const std::string kErased = kInIsp + " < OK\r\nProgramming...";

TEST_F(HidRun, CarriesADeviceThroughAWholeUpdate) {
    models::DeviceOptions options;
    options.nextVersion = "TARN-R200 V5.2R1";
    models::HidReaderOptions reader;
    reader.direction = 5;
    plug(options, reader);
    const auto report = start();
    EXPECT_EQ(exitStatus(report), 0);
    EXPECT_EQ(bench.face.log, kErased + " < OK\r\nUpdate Finish\r\n");
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(report.port, "HID1 (F/W:KESTREL V2.4)");
    EXPECT_EQ(behind->reader.commands(), Frames({{203, 0},
                                                 {1, 4, 0, 0, 0x4B, 0},  // 19200 at opening
                                                 {5, 0},
                                                 {1, 4, 0, 0, 0x4B, 0},  // and as the scan's first setting
                                                 {4, 0},
                                                 {3, 1, 5}}));
    EXPECT_EQ(bus.openDevices(), 0);
    EXPECT_EQ(updater->conclude(report, true).facts[2], "The device now answers with TARN-R200 V5.2R1.");
    EXPECT_EQ(bus.openDevices(), 0);
}

TEST_F(HidRun, GivesTheReaderTheRateOfTheFirmwareInformation) {
    models::DeviceOptions options;
    options.bootBaud = 57600;
    plug(options);
    startProgram();
    bench.write("Download/r200.hex", kImage);
    bench.write("firmware.inf",
                "[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/f/r200.hex\nISP_BAUDRATE=57600\n");
    presenter->optLast_Click();
    EXPECT_EQ(exitStatus(start()), 0) << bench.face.log;
    EXPECT_EQ(memoryFault(), "");
    const auto& commands = behind->reader.commands();
    ASSERT_EQ(commands.size(), 7U);
    EXPECT_EQ(commands[5], Bytes({1, 4, 0, 0, 0xE1, 0}));
    EXPECT_EQ(behind->reader.baudRate(), 57600U);
}

TEST_F(HidRun, TellsADeviceThatTookAPasswordThatTheSessionEnds) {
    for (const bool hears : {true, false}) {
        models::DeviceOptions options;
        options.password = "quill";
        if (!hears) options.faults = {"deaf@04"};
        plug(options);
        const auto begin = bench.runtime.ms();
        EXPECT_EQ(exitStatus(start()), 0);
        std::vector<int> functions;
        for (const auto& request : device->log().requests) functions.push_back(request.function);
        EXPECT_EQ(functions, (std::vector<int>{0x01, 0x1F, 0x00, 0x03, 0x1F, 0x04}));
        EXPECT_EQ(behind->reader.commands().back(), Bytes({3, 1, 3})) << "the reader is told after the device";
        EXPECT_EQ(bench.runtime.ms() - begin > 5000, !hears) << "3 s for a device that does not answer";
        EXPECT_EQ(bus.openDevices(), 0);
        bus.unplug(kPath);
        updater->hidPort().NumberOfCommPorts();
    }
}

TEST_F(HidRun, SendsNoCommandsToAReaderThatTakesNone) {
    models::HidReaderOptions reader;
    reader.name = "Kestrel (hid1)";
    plug({}, reader);
    EXPECT_EQ(exitStatus(start()), 0);
    EXPECT_EQ(memoryFault(), "");
    EXPECT_TRUE(behind->reader.commands().empty());
    EXPECT_NE(bench.face.log.find("Comm Port : HID1 (F/W:)\r\n"), std::string::npos);
}

TEST_F(HidRun, SaysWhyAReaderDoesNotOpenAndWhatHelps) {
    plug();
    bus.forbid(kPath);
    EXPECT_EQ(exitStatus(start()), 3);
    EXPECT_EQ(updater->refusal("HID1"),
              "HID1 does not open: /dev/hidraw0: Permission denied. Plug the reader in again; when this user may not "
              "use it, install the udev rules of this program.");
}

TEST_F(HidRun, ScansReadersBehindSerialPorts) {
    models::DeviceOptions boot;
    boot.kind = models::Kind::boot;
    models::Device serial(boot);
    bench.serial.plug(3, serial);
    plug();
    EXPECT_EQ(exitStatus(start()), 0);
    EXPECT_EQ(bench.face.panel.front(), "show ,COM3,HID1,");
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(serial.log().erases, 0);
}

TEST_F(HidRun, WithAReaderUnpluggedEndsSoonAndWorksAgainWhenItIsBack) {
    struct Case {
        const char* fault;
        std::string log;
        int status;
    };
    const std::string missed =
        "   Scan by 115200,N,8,1, No Device!!\r\n   Scan by 38400,N,8,1, No Device!!\r\n"
        "   Scan by 57600,N,8,1, No Device!!\r\n   Scan by 9600,N,8,1, No Device!!\r\n";
    const std::string noDevice = kOpened + ", No Device!!\r\n" + missed + "Can not found any device on comm port!!\r\n";
    const std::string programming = "Programming... < NG\r\n";
    const std::string tries = "\r\niTry:1\r\n" + programming + "\r\niTry:2\r\n" + programming + "\r\niTry:3\r\n";
    const std::string erasing =
        " < NG\r\n\r\niTry:1\r\nErase Firmware... < NG\r\n\r\niTry:2\r\nErase Firmware... < NG\r\n"
        "\r\niTry:3\r\n";
    const Case cases[] = {
        {"unplug-byte@1", noDevice, 3},
        {"unplug-request@01", noDevice, 3},
        {"unplug-request@1f", kToIsp + " < NG\r\nCan't enter ISP Mode!!\r\n", 5},
        {"cut@3", kToIsp + " < OK\r\nCan't enter ISP Mode!!\r\n", 5},  // instead of the boot loader's prompt
        {"unplug-erase", kInIsp + erasing, 5},
        {"unplug@1", kErased + " < NG\r\n" + tries, 5},
        {"unplug@:00000001FF", kErased + " < NG\r\n" + tries, 5},
    };
    for (const auto& one : cases) {
        models::DeviceOptions options;
        options.faults.add(one.fault);
        plug(options);
        const auto report = start();
        EXPECT_EQ(exitStatus(report), one.status) << one.fault;
        EXPECT_EQ(bench.face.log, one.log) << one.fault;
        EXPECT_TRUE(lostAt) << one.fault;
        EXPECT_LT(afterLoss, 3000) << one.fault;
        EXPECT_EQ(bus.openDevices(), 0) << one.fault;
        EXPECT_EQ(updater->conclude(report, true).facts[0],
                  one.status == 3 ? "No device answered on any port."
                                  : "HID1 (F/W:KESTREL V2.4) was lost: it was unplugged, or its cable came loose.")
            << one.fault;

        plugInAgain();
        EXPECT_EQ(exitStatus(start(true)), 0) << one.fault << bench.face.log;
        EXPECT_EQ(memoryFault(), "") << one.fault;
        bus.unplug(kPath);
        updater->hidPort().NumberOfCommPorts();
    }
}

TEST_F(HidRun, WithAReaderUnpluggedInACommandEndsSoon) {
    // Commands that are never answered, so that the reader is unplugged while the program waits.
    struct Case {
        std::uint8_t muted;
        std::string log;
        int status;
    };
    const std::string asked = "\f\fOpen HID1 ...";
    for (const auto& one : {Case{203, asked + " < NG\r\nCan not found any device on comm port!!\r\n", 3},
                            Case{4,
                                 kOpened +
                                     "\f[Local Site]\r\nComm Port : HID1 (F/W:)\r\nDevice F/W: TARN-R200 V5.1R23"
                                     "\r\n\r\n" +
                                     kToIsp.substr(kFound.size()) + " < NG\r\nCan't enter ISP Mode!!\r\n",
                                 5}}) {
        models::HidReaderOptions reader;
        reader.mutes = {one.muted};
        plug({}, reader);
        if (!updater) startProgram();
        bool isDone = false;
        bench.runtime.setPump([&] {
            const auto& commands = behind->reader.commands();
            if (isDone || commands.empty() || commands.back()[0] != one.muted) return;
            isDone = true;
            lostAt = bench.runtime.ms();
            bus.unplug(kPath);
        });
        bench.face.log.clear();
        const auto report = presenter->start(false);
        EXPECT_EQ(exitStatus(report), one.status) << int(one.muted);
        EXPECT_EQ(bench.face.log, one.log) << int(one.muted);
        EXPECT_LT(bench.runtime.ms() - *lostAt, 3000) << int(one.muted);
        behind->reader.options().mutes.clear();
        plugInAgain();
        EXPECT_EQ(exitStatus(presenter->start(false)), 0) << bench.face.log;
        bus.unplug(kPath);
        updater->hidPort().NumberOfCommPorts();
    }
}

}  // namespace
}  // namespace corvane
