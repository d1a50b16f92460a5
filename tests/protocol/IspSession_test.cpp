#include "protocol/IspSession.h"

#include <gtest/gtest.h>

#include "models/Device.h"
#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

constexpr char kGoTo[] = "GoTo ISP Mode (TarnPlus Protocol)...";

class Isp : public fakes::OverEachPort {
protected:
    models::Device& connect(models::DeviceOptions options) {
        if (bench.port.PortOpen()) bench.port.PortOpen(false);
        device = std::make_unique<models::Device>(std::move(options));
        bench.open(*device);
        face.log.clear();
        session.protocolName = device->options().kind == models::Kind::tarn ? "Tarn" : "TarnPlus";
        return *device;
    }

    std::vector<int> functions() const {
        std::vector<int> all;
        for (const auto& request : device->log().requests) all.push_back(request.function);
        return all;
    }

    std::unique_ptr<models::Device> device;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    IspSession isp{session, face};
};

TEST_P(Isp, SwitchesToEachBootLoaderRate) {
    struct Case {
        std::int32_t announced;
        std::uint32_t bootBaud;
        bool seen;
        std::string settings;
    };
    const Case cases[] = {
        {38400, 38400, true, "38400,N,8,1"},   {0, 19200, true, "19200,N,8,1"},    {0, 115200, false, "19200,N,8,1"},
        {-1, 19200, true, "19200,N,8,1"},      {-1, 115200, true, "115200,N,8,1"}, {-1, 57600, false, "19200,N,8,1"},
        {57600, 115200, false, "57600,N,8,1"},
    };
    for (const auto& one : cases) {
        models::DeviceOptions options;
        options.bootBaud = one.bootBaud;
        connect(options);
        session.ispBaudRate = one.announced;
        EXPECT_EQ(isp.GoToISP(), one.seen) << one.announced << " " << one.bootBaud;
        EXPECT_EQ(face.log, std::string(kGoTo) + " < OK\r\n");  // also when no prompt followed
        EXPECT_EQ(bench.port.Settings(), one.settings);
        EXPECT_EQ(functions(), std::vector<int>{0x1F});
    }
}

TEST_P(Isp, WaitsASecondBeforeItLooksForThePrompt) {
    for (const char* fault : {"boot-deaf=1000", "boot-deaf=1250"}) {
        models::DeviceOptions options;
        options.faults = {fault, "banner=0d0a"};
        connect(options);
        session.ispBaudRate = 0;
        // The first question comes 1.05 s after the switch, the second and last one 150 ms later.
        EXPECT_EQ(isp.GoToISP(), std::string(fault) == "boot-deaf=1000");
    }
}

TEST_P(Isp, GivesThePortTheRateWithoutAComma) {
    models::DeviceOptions options;
    options.bootBaud = 57600;
    connect(options);
    session.ispBaudRate = 57600;
    const auto start = bench.runtime.ms();
    EXPECT_TRUE(isp.GoToISP());
    EXPECT_GE(bench.runtime.ms() - start, 1050);
    bench.port.PortOpen(false);
    EXPECT_EQ(bench.port.Settings(), isHid() ? "57600,N,8,1" : "57600N,N,8,1");
}

TEST_P(Isp, WaitsForTheAnswerToTheSwitch) {
    for (const bool isTarn : {false, true}) {
        fakes::ScriptedPeer peer;
        bench.open(peer);
        session.protocolName = isTarn ? "Tarn" : "TarnPlus";
        const auto start = bench.runtime.ms();
        EXPECT_FALSE(isp.GoToISP());
        const int limit = isTarn ? 500 : 5000;
        EXPECT_GE(bench.runtime.ms() - start, limit);
        EXPECT_LE(bench.runtime.ms() - start, limit + 10);
        bench.port.PortOpen(false);
    }
}

TEST_P(Isp, LogsInOnceWhenTheDeviceWantsIt) {
    models::DeviceOptions options;
    options.password = "quill";
    connect(options);
    EXPECT_TRUE(isp.GoToISP());
    EXPECT_EQ(functions(), (std::vector<int>{0x1F, 0x00, 0x03, 0x1F}));
    EXPECT_TRUE(face.questions.empty());

    options.password = "other";
    connect(options);
    face.answers = {""};
    EXPECT_FALSE(isp.GoToISP());
    EXPECT_EQ(face.log, std::string(kGoTo) + " < NG\r\n");
    EXPECT_FALSE(device->isInBoot());
}

TEST_P(Isp, TakesNoOtherRefusalForADemandToLogIn) {
    for (const char* fault : {"refuse@1f=07", "crc@1fx1", "deaf@1f"}) {
        models::DeviceOptions options;
        options.faults = {fault};
        connect(options);
        EXPECT_FALSE(isp.GoToISP()) << fault;
        EXPECT_EQ(functions(), std::vector<int>{0x1F}) << fault;
        EXPECT_EQ(face.log, std::string(kGoTo) + " < NG\r\n") << fault;
    }
}

TEST_P(Isp, SwitchesTheOlderProtocolByAnAnswerThatBeginsWithA) {
    models::DeviceOptions options;
    options.kind = models::Kind::tarn;
    connect(options);
    EXPECT_TRUE(isp.GoToISP());
    EXPECT_EQ(face.log, "GoTo ISP Mode (Tarn Protocol)... < OK\r\n");
    EXPECT_EQ(device->log().commands, std::vector<std::string>{"X"});
    options.faults = {"tarn@X=BA"};
    connect(options);
    EXPECT_FALSE(isp.GoToISP());
    EXPECT_EQ(face.log, "GoTo ISP Mode (Tarn Protocol)... < NG\r\n");
}

TEST_P(Isp, ErasesOnAcknowledgementWithinTenSeconds) {
    struct Case {
        const char* fault;
        bool erased;
        int atLeast, atMost;
    };
    for (const auto& one : {Case{"erase-slow=9900", true, 9900, 9920}, Case{"erase-slow=10100", false, 10000, 10020},
                            Case{"erase-nak", false, 0, 20}, Case{"erase-mute", false, 10000, 10020}}) {
        models::DeviceOptions options;
        options.kind = models::Kind::boot;
        options.faults = {one.fault};
        connect(options);
        const auto start = bench.runtime.ms();
        EXPECT_EQ(isp.ISP_Erase(), one.erased) << one.fault;
        EXPECT_GE(bench.runtime.ms() - start, one.atLeast) << one.fault;
        EXPECT_LE(bench.runtime.ms() - start, one.atMost) << one.fault;
        EXPECT_EQ(face.log, std::string("Erase Firmware...") + (one.erased ? " < OK\r\n" : " < NG\r\n"));
        EXPECT_EQ(textOf(device->log().boot), "\x02X\r");
    }
}

TEST_P(Isp, ResetsWithoutWaiting) {
    models::DeviceOptions options;
    options.kind = models::Kind::boot;
    connect(options);
    const auto start = bench.runtime.ms();
    isp.ISP_Reset();
    EXPECT_EQ(bench.runtime.ms(), start);
    EXPECT_EQ(face.log, "Update Finish\r\n");
    isp.wait_output_empty(250);
    EXPECT_EQ(textOf(device->log().boot), "\x02R\r");
}

/// A HID port takes what it is given within a millisecond a report; only a slow line has bytes that wait.
TEST(IspOnSerial, WaitsForTheTransmitBufferInFiveStepsAtMost) {
    fakes::SerialBench bench;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    IspSession isp{session, face};
    models::Device device{{}};
    bench.open(device);
    struct Case {
        int bytes;
        int ms;
    };
    for (const auto& one : {Case{0, 50}, Case{100, 100}, Case{250, 150}, Case{5000, 250}}) {  // 1.92 bytes a ms
        bench.control.OutBufferCount(0);
        bench.control.addUnsent(one.bytes);
        const auto start = bench.runtime.ms();
        isp.wait_output_empty(250);
        EXPECT_EQ(bench.runtime.ms() - start, one.ms) << one.bytes;
    }
    bench.port.PortOpen(false);
    const auto start = bench.runtime.ms();
    isp.wait_output_empty(250);
    EXPECT_EQ(bench.runtime.ms() - start, 250);
}

TEST_P(Isp, TreatsALostPortAsNoAnswer) {
    fakes::ScriptedPeer peer;
    bench.open(peer);
    const auto start = bench.runtime.ms();
    peer.unplugAt(start + 100);
    session.protocolName = "TarnPlus";
    EXPECT_FALSE(isp.GoToISP());
    EXPECT_FALSE(isp.ISP_Erase());
    isp.ISP_Reset();
    EXPECT_EQ(face.log, std::string(kGoTo) + " < NG\r\nErase Firmware... < NG\r\nUpdate Finish\r\n");
    EXPECT_LE(bench.runtime.ms() - start, 110);
}

CORVANE_OVER_EACH_PORT(Isp);

}  // namespace
}  // namespace corvane
