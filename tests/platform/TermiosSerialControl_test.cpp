#include <asm/termbits.h>
#include <gtest/gtest.h>

#include "SerialRigs.h"
#include "platform/linux/serial/LineSettings.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

class Termios : public SerialControlContract<PseudoTerminalRig> {
protected:
    TermiosSerialControl& control = side.control;
};

TEST_F(Termios, EveryRateReachesTheLine) {
    control.PortOpen(true);
    for (const std::uint32_t rate : {110u, 57600u, 128000u, 921600u, 1000050u}) {
        control.Settings(std::to_string(rate) + ",N,8,1");
        EXPECT_EQ(side.line.rate(), rate);
        EXPECT_EQ(line(), (CommState{rate, 0, 8, 0}));
    }
    control.Settings("115200,N,8,1");
    side.line.setRate(115385);  // as near as a divider may come
    EXPECT_EQ(line().baudRate, 115200u);
}

TEST_F(Termios, NothingIsSentOrEchoedByOpeningAndReceiving) {
    const fakes::PseudoTerminal cooked;  // with echo and signals, as a terminal starts
    side.map.entries = {{cooked.path().substr(5), "COM1"}};
    side.map.list();
    control.RTSEnable(true);
    control.PortOpen(true);
    control.Settings("57600,E,7,2");
    cooked.say("hello\r\n\x03\x04");
    ASSERT_TRUE(waitUntil(side.runtime, [&] { return control.InBufferCount() == 9; }));
    EXPECT_EQ(control.Input(), Variant(std::string("hello\r\n\x03\x04")));
    EXPECT_EQ(cooked.heard(), "");
}

TEST_F(Termios, OutputNeverBlocksAndLosesNothing) {
    control.PortOpen(true);
    std::string image;
    for (int i = 0; image.size() < 300000; ++i) image += std::to_string(i);
    control.Output(image);
    EXPECT_GT(control.OutBufferCount(), 100000);
    EXPECT_EQ(heard(image.size()), image);
    EXPECT_EQ(control.OutBufferCount(), 0);
    side.unplug();
    EXPECT_EQ(errorOf([&] { control.Output(image); }), 8020);
    EXPECT_FALSE(control.PortOpen()) << "it notices the loss itself";
}

TEST_F(Termios, FlowControlStopsTheOutput) {
    control.HandShaking(1);
    control.PortOpen(true);
    received("\x13.", 1);
    control.Output(std::string("held"));
    EXPECT_EQ(control.OutBufferCount(), 4);
    side.say("\x11");
    EXPECT_EQ(heard(4), "held");
    EXPECT_EQ(control.Input(), Variant(std::string(".")));
}

TEST_F(Termios, MarksOfParityErrorsDoNotTouchTheData) {
    control.Settings("9600,E,8,1");
    control.PortOpen(true);
    side.say("\xff");
    received(std::string("\xff\xff\0A\xff", 5), 6);
    EXPECT_EQ(control.Input(), Variant(std::string("\xff\xff\xff\0A\xff", 6)));

    const Bytes marked{'a', 0xFF, 0xFF, 0xFF, 0x00, 'b', 0x00, 0xFF, 0x00, 0xFF, 0xFF, 0xFF, 'c'};
    for (std::size_t cut = 0; cut <= marked.size(); ++cut) {
        ParityMarks marks;
        auto bytes = marks.removed(marked.data(), cut, '?');
        const auto rest = marks.removed(marked.data() + cut, marked.size() - cut, '?');
        bytes.insert(bytes.end(), rest.begin(), rest.end());
        EXPECT_EQ(bytes, (Bytes{'a', 0xFF, '?', 0x00, '?', 0xFF, 'c'})) << cut;
    }
}

TEST_F(Termios, SaysWhyAPortDoesNotOpen) {
    using Kind = OpenFailure::Kind;
    const fakes::ScratchFolder folder;
    side.map.entries.push_back({"../" + folder.file("file", "").substr(1), "COM2"});
    side.map.list();
    side.occupy();
    const std::tuple<std::int16_t, Kind, int> cases[] = {
        {1, Kind::inUse, EWOULDBLOCK}, {2, Kind::noSerialPort, ENOTTY}, {3, Kind::notThere, ENOENT}};
    for (const auto& [number, kind, error] : cases) {
        control.CommPort(number);
        EXPECT_THROW(control.PortOpen(true), PortError);
        EXPECT_EQ(control.openFailure().kind, kind) << number;
        EXPECT_EQ(control.openFailure().systemError, error) << number;
        EXPECT_EQ(control.openFailure().path, side.map.devicePath(number).value_or("")) << number;
    }
    side.other.PortOpen(false);
    control.CommPort(1);
    control.PortOpen(true);
    EXPECT_EQ(control.openFailure().kind, Kind::none);
    EXPECT_EQ(control.FormatMessage(22) + control.FormatMessage(99999), "Invalid argument");
}

TEST(LineSettings, FlagsOfEachField) {
    const struct {
        LineSetup setup;  // state, hand-shaking, parity marks
        tcflag_t control, input;
    } cases[] = {
        {{{9600, 0, 8, 0}, 0, true}, CS8, 0},
        {{{300, 1, 7, 0}, 0, false}, CS7 | PARENB | PARODD, 0},
        {{{57600, 2, 6, 2}, 1, false}, CS6 | PARENB | CSTOPB, IXON | IXOFF},
        {{{128000, 3, 8, 0}, 2, true}, CS8 | PARENB | PARODD | CMSPAR | CRTSCTS, INPCK | PARMRK},
        {{{921600, 4, 8, 2}, 3, false}, CS8 | PARENB | CMSPAR | CSTOPB | CRTSCTS, IXON | IXOFF},
        {{{1500, 0, 5, 1}, 0, false}, CS5 | CSTOPB, 0},
    };
    for (const auto& c : cases) {
        termios2 line{};
        line.c_iflag = INPCK | PARMRK | IXON | IXOFF;
        line.c_cflag = B38400 | CS6 | PARENB | CMSPAR | CSTOPB | CRTSCTS | CLOCAL | CREAD;
        apply(c.setup, line);
        EXPECT_EQ(line.c_cflag, c.control | BOTHER | BOTHER << 16 | CLOCAL | CREAD) << c.setup.state.baudRate;
        EXPECT_EQ(line.c_iflag, c.input) << c.setup.state.baudRate;
        EXPECT_EQ(line.c_ispeed, c.setup.state.baudRate);
        EXPECT_EQ(stateOf(line), c.setup.state);
    }
}

TEST(LineSettings, WhatALineHasTaken) {
    for (const std::uint32_t rate : {128000u, 124160u, 131840u}) {
        EXPECT_TRUE(hasTaken({rate, 2, 8, 0}, {128000, 2, 8, 0})) << rate;
    }
    const CommState others[] = {
        {124159, 2, 8, 0}, {131841, 2, 8, 0}, {128000, 0, 8, 0}, {128000, 2, 7, 0}, {128000, 2, 8, 2}};
    for (const auto& line : others) EXPECT_FALSE(hasTaken(line, {128000, 2, 8, 0})) << line.baudRate;
}

}  // namespace
}  // namespace corvane
