#include <gtest/gtest.h>

#include "models/Device.h"
#include "support/ScriptedPeer.h"
#include "support/hid/HidBench.h"

namespace corvane {
namespace {

using fakes::HidBench;
using fakes::ScriptedPeer;
using Texts = std::vector<std::string>;

/// The control, the transport library and a simulated reader as one.
class Reader : public ::testing::Test {
protected:
    models::HidReader& open(const models::HidReaderOptions& options = {}) {
        auto& plugged = bench_.plug(peer_, options);
        bench_.port.NumberOfCommPorts();
        bench_.port.CommPort("HID1");
        bench_.port.Settings("57600,N,8,1");
        bench_.port.PortOpen(true);
        return plugged.reader;
    }

    /// What comes in within so many ms.
    std::string received(int ms) {
        std::string text;
        for (const auto end = bench_.runtime.ms() + ms; bench_.runtime.ms() < end;) {
            bench_.runtime.WaitActivity(1);
            bench_.runtime.DoEvents();
            text += textOf(std::get<Bytes>(bench_.port.CommInput()));
        }
        return text;
    }

    ScriptedPeer peer_;
    HidBench bench_;
    VellIO& control_ = *bench_.control;
};

TEST_F(Reader, IsOpenedUsedAndLeftAsItWas) {
    models::HidReaderOptions options;
    options.direction = 0x15;
    auto& reader = open(options);
    EXPECT_TRUE(bench_.port.PortOpen());
    EXPECT_EQ(reader.commands(), std::vector<Bytes>({{203, 0}, {1, 4, 0, 0, 0xE1, 0}, {5, 0}}));
    EXPECT_EQ(reader.baudRate(), 57600u);
    EXPECT_EQ(control_.GetHIDVersion(), "KESTREL V2.4");
    EXPECT_TRUE(control_.SetKestrelIODirect(0, 1, 0));
    EXPECT_EQ(reader.currentDirection(), 2);
    peer_.answer("ping", "pong");
    bench_.port.CommOutput(std::string("ping"));
    EXPECT_EQ(received(20), "pong");
    bench_.port.PortOpen(false);
    EXPECT_EQ(reader.currentDirection(), 5);
    EXPECT_EQ(bench_.bus.openDevices(), 0);
}

TEST_F(Reader, TakesRegistersKeysAndFlash) {
    auto& reader = open();
    Bytes buffer{1, 2, 3, 4};
    EXPECT_TRUE(control_.KestrelSetRegister(0x100, buffer, 1, 3));
    EXPECT_EQ(Bytes(reader.registers().begin() + 0x100, reader.registers().begin() + 0x103), Bytes({2, 3, 4}));
    EXPECT_TRUE(control_.KestrelGetRegister(0x100, buffer, 0, 4));
    EXPECT_TRUE(control_.SetKestrelKeyCode('A', 4, 0));
    EXPECT_TRUE(control_.KestrelEraseFlash(1));
    Bytes results;
    EXPECT_FALSE(control_.SendHIDCMD(99, {}, results));
    EXPECT_TRUE(control_.IsCommandNotSupported());
    EXPECT_FALSE(control_.SendHIDCMD(2, {1}, results));
    EXPECT_FALSE(control_.IsCommandNotSupported());
    EXPECT_TRUE(control_.IsSendHIDCmdNAK());
    EXPECT_TRUE(control_.SendHIDCMD(203, {}, results));
}

TEST_F(Reader, CarriesLongRequestsAndLongAnswers) {
    open();
    Bytes request(255, 'a'), answer(700, 'b');
    request.back() = '\n';
    peer_.answer(std::string("\n").insert(0, "a"), std::string(700, 'b'));
    bench_.port.CommOutput(request);
    EXPECT_EQ(received(400).size(), 700u);
    EXPECT_EQ(peer_.heard(), request);
    EXPECT_EQ(bench_.port.OutBufferCount(), 0);
}

TEST_F(Reader, ThatIsUnpluggedEndsACommandAndWorksAgainAfterwards) {
    open();
    Texts events;
    control_.OnDevice = [&](std::int32_t event, const std::string& name, const std::string& text) {
        events.push_back(std::to_string(event) + " " + name + " " + text);
    };
    const auto start = bench_.runtime.ms();
    bench_.readers[0]->reader.options().mutes = {4};
    bench_.runtime.at(start + 100, [this] { bench_.unplug(1); });
    EXPECT_EQ(control_.GetHIDVersion(), "");
    EXPECT_LE(bench_.runtime.ms() - start, 1000);
    EXPECT_FALSE(bench_.port.PortOpen());
    bench_.port.CommOutput(std::string("nobody hears this"));
    EXPECT_EQ(received(10), "");
    bench_.port.PortOpen(false);
    EXPECT_EQ(bench_.port.NumberOfCommPorts(), 0);
    bench_.plugAgain(1);
    bench_.runtime.Sleep(600);
    bench_.runtime.DoEvents();
    EXPECT_TRUE(control_.IsNewDevicePlugin());
    bench_.readers[0]->reader.options().mutes = {};
    bench_.port.PortOpen(true);
    EXPECT_TRUE(bench_.port.PortOpen());
    bench_.runtime.DoEvents();
    EXPECT_EQ(events,
              Texts({"2 HID1 HID1 Kestrel", "0 HID1 HID1 Kestrel", "1 HID1 HID1 Kestrel", "2 HID1 HID1 Kestrel"}));
    EXPECT_EQ(control_.GetHIDVersion(), "KESTREL V2.4");
}

TEST_F(Reader, ThatIsUnpluggedWhileOpeningEndsItSoon) {
    bench_.plug(peer_, {});
    bench_.port.NumberOfCommPorts();
    bench_.port.CommPort("HID1");
    bench_.runtime.at(0, [this] { bench_.unplug(1); });
    bench_.readers[0]->reader.options().mutes = {203};
    bench_.port.PortOpen(true);
    EXPECT_FALSE(bench_.port.PortOpen());
    EXPECT_LE(bench_.runtime.ms(), 1150);
}

TEST_F(Reader, RefusalsAndClearToSendReachTheControl) {
    models::HidReaderOptions options;
    options.refusals = {{1, 2}, {5, 1}};
    auto& reader = open(options);
    EXPECT_EQ(reader.commands().size(), 9u);
    EXPECT_EQ(reader.baudRate(), 57600u);
    int events = 0;
    bench_.event.OnComm = [&] { events += bench_.port.CommEvent() == 3; };
    reader.clearToSend(true);
    received(5);
    EXPECT_TRUE(bench_.port.CTSHolding());
    EXPECT_EQ(events, 1);
    bench_.port.Break(true);
    EXPECT_TRUE(reader.breakState());
}

TEST_F(Reader, IsAPortOfADevice) {
    models::Device device{{}};
    auto& plugged = bench_.plug(device);
    bench_.port.NumberOfCommPorts();
    bench_.port.CommPort("HID1");
    bench_.port.PortOpen(true);
    const Bytes getVersion{1, 0, 0x1F, 0};  // without a CRC that fits: the device stays silent
    bench_.port.CommOutput(getVersion);
    EXPECT_EQ(received(50), "");
    EXPECT_EQ(device.log().heard.at(19200), getVersion);
    bench_.port.Settings("115200N");
    bench_.port.CommOutput(getVersion);
    received(50);
    EXPECT_EQ(device.log().heard.at(115200), getVersion);
    EXPECT_EQ(plugged.reader.baudRate(), 115200u);
}

}  // namespace
}  // namespace corvane
