#include "protocol/IspSession.h"

#include "Dialogue.h"

namespace corvane::tests {

struct Isp : Dialogue {
    /// Connects a device, and asks it to switch.
    bool goTo(const models::DeviceOptions& options, std::int32_t rate = -1) {
        connect(options);
        session.protocolName = options.kind == models::Kind::tarn ? "Tarn" : "TarnPlus";
        session.ispBaudRate = rate;
        return isp.GoToISP();
    }
};

TEST_P(Isp, SwitchesToEachBootLoaderRate) {
    const std::tuple<std::int32_t, std::uint32_t, bool, std::string> cases[] = {
        {38400, 38400, true, "38400,N,8,1"}, {0, 19200, true, "19200,N,8,1"},    {0, 115200, false, "19200,N,8,1"},
        {-1, 19200, true, "19200,N,8,1"},    {-1, 115200, true, "115200,N,8,1"}, {57600, 115200, false, "57600,N,8,1"}};
    for (const auto& [announced, bootBaud, seen, settings] : cases) {
        EXPECT_EQ(goTo({.bootBaud = bootBaud}, announced), seen) << announced << " " << bootBaud;
        EXPECT_EQ(face.log, "GoTo ISP Mode (TarnPlus Protocol)... < OK\r\n") << "also when no prompt followed";
        EXPECT_EQ(bench.port.Settings(), settings);
        EXPECT_EQ(device->log().requests.size(), 1U);
    }
    bench.port.PortOpen(false);
    EXPECT_EQ(bench.port.Settings(), isHid() ? "57600,N,8,1" : "57600N,N,8,1") << "the field as it was given";
}

TEST_P(Isp, WaitsASecondBeforeItLooksForThePrompt) {
    for (const char* fault : {"boot-deaf=1000", "boot-deaf=1250"}) {
        // The first question comes 1.05 s after the switch, the second and last one 150 ms later.
        EXPECT_EQ(goTo({.faults = {fault, "banner=0d0a"}}, 0), std::string(fault) == "boot-deaf=1000");
        EXPECT_GE(ms(), 1050);
    }
}

TEST_P(Isp, TakesNothingButItsAnswerForOne) {
    const std::tuple<models::Kind, const char*, const char*> cases[] = {
        {models::Kind::tarnPlus, "crc@1fx1", "GoTo ISP Mode (TarnPlus Protocol)... < NG\r\n"},
        {models::Kind::tarn, "tarn@X=A1", "GoTo ISP Mode (Tarn Protocol)... < OK\r\n"},
        {models::Kind::tarn, "tarn@X=BA", "GoTo ISP Mode (Tarn Protocol)... < NG\r\n"},
    };
    for (const auto& [kind, fault, log] : cases) {
        goTo({.kind = kind, .faults = {fault}});
        EXPECT_EQ(face.log, log) << fault;
    }
}

TEST_P(Isp, ErasesOnAcknowledgementWithinTenSeconds) {
    const std::tuple<const char*, bool, int, int> cases[] = {
        {"erase-slow=9900", true, 9920, 9940}, {"erase-slow=10100", false, 10000, 10020}, {"erase-nak", false, 0, 20}};
    for (const auto& [fault, erased, atLeast, atMost] : cases) {
        connect(bootLoader({fault}));
        EXPECT_EQ(isp.ISP_Erase(), erased) << fault;
        expectMs(atLeast, atMost);
        EXPECT_EQ(face.log, std::string("Erase Firmware...") + (erased ? " < OK\r\n" : " < NG\r\n"));
        EXPECT_EQ(textOf(device->log().boot), "\x02X\r");
    }
}

TEST_P(Isp, BeginsToProgramAfterALateEraseOnlyWhenTheBootLoaderPrompts) {
    for (const bool prompts : {true, false}) {
        auto& boot = connectPeer();
        boot.answer("\x02X\r", "");
        boot.say(begin + 10400, Bytes{6});  // the first one's, which the second command has not waited for
        if (prompts) boot.say(begin + 14000, Bytes{6});
        for (int i = 0; prompts && i < 4; ++i) boot.say(begin + 14001 + 50 * i, "\r\nAVR>");  // it was asked meanwhile
        isp.beginDevice();
        EXPECT_FALSE(isp.ISP_Erase());
        EXPECT_TRUE(isp.wasEraseSilent());
        EXPECT_EQ(isp.ISP_Erase(), prompts);
        prompts ? expectMs(14000 + 1500, 14000 + 1700) : expectMs(20400, 20800);
        EXPECT_EQ(boot.heardText().substr(0, 7), "\x02X\r\x02X\r\r");
    }
}

/// A HID port takes what it is given within a millisecond a report; only a slow line has bytes that wait.
TEST(IspOnSerial, WaitsForTheTransmitBufferInFiveStepsAtMost) {
    fakes::SerialBench bench;
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{bench.runtime, face, bench.port, cancel};
    IspSession isp{session, face};
    models::Device device{{}};
    bench.open(device);
    const auto waited = [&](int bytes) {  // 1.92 a ms
        bench.control.OutBufferCount(0);
        bench.control.addUnsent(bytes);
        const auto start = bench.runtime.ms();
        isp.wait_output_empty(250);
        return bench.runtime.ms() - start;
    };
    EXPECT_EQ((std::vector{waited(0), waited(100), waited(250), waited(5000)}),
              (std::vector<std::int64_t>{50, 100, 150, 250}));
    bench.port.PortOpen(false);
    const auto start = bench.runtime.ms();
    isp.wait_output_empty(250);
    EXPECT_EQ(bench.runtime.ms() - start, 250);
}

CORVANE_OVER_EACH_PORT(Isp);

}  // namespace corvane::tests
