#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SerialRigs.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

TEST(TermiosSerialControl, EveryRateReachesTheLine) {
    PseudoTerminalRig rig;
    rig.control.PortOpen(true);
    for (const std::uint32_t rate :
         {110u,   150u,   300u,    600u,    1200u,   1500u,   2400u,   4800u,   9600u,   14400u,  19200u,   38400u,
          56000u, 57600u, 115200u, 128000u, 150000u, 230400u, 256000u, 460800u, 500000u, 921600u, 1000050u, 3000000u}) {
        rig.control.Settings(std::to_string(rate) + ",N,8,1");
        EXPECT_EQ(rig.line.rate(), rate);
        CommState line;
        EXPECT_TRUE(rig.control.GetCommState(rig.control.CommID(), line));
        EXPECT_EQ(line, (CommState{rate, 0, 8, 0}));
    }
}

TEST(TermiosSerialControl, RateThatTheDividerMissedReadsAsItWasAskedFor) {
    PseudoTerminalRig rig;
    rig.control.Settings("115200,N,8,1");
    rig.control.PortOpen(true);
    for (const auto& [onTheLine, read] : {std::pair(115385u, 115200u), std::pair(100000u, 100000u)}) {
        rig.line.setRate(onTheLine);
        CommState line;
        EXPECT_TRUE(rig.control.GetCommState(rig.control.CommID(), line));
        EXPECT_EQ(line, (CommState{read, 0, 8, 0}));
    }
}

TEST(TermiosSerialControl, NothingIsSentOrEchoedByOpeningAndReceiving) {
    LinuxRuntime runtime;
    const fakes::PseudoTerminal line;  // with echo and signals, as a terminal starts
    fakes::FakePortMap map({{line.path().substr(5), "COM1"}});
    TermiosSerialControl control(runtime, map);
    control.RTSEnable(true);
    control.PortOpen(true);
    control.Settings("57600,E,7,2");
    line.say("hello\r\n\x03\x04");
    ASSERT_TRUE(waitUntil(runtime, [&] { return control.InBufferCount() == 9; }));
    EXPECT_EQ(control.Input(), Variant(std::string("hello\r\n\x03\x04")));
    EXPECT_EQ(line.heard(), "");
}

TEST(TermiosSerialControl, OutputNeverBlocksAndLosesNothing) {
    PseudoTerminalRig rig;
    rig.control.PortOpen(true);
    std::string image;
    for (int i = 0; image.size() < 300000; ++i) image += std::to_string(i);
    rig.control.Output(image);
    EXPECT_GT(rig.control.OutBufferCount(), 100000);
    std::string heard;
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return (heard += rig.heard()).size() >= image.size(); }));
    EXPECT_EQ(heard, image);
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    rig.control.Output(image);
    rig.control.OutBufferCount(0);
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    rig.heard();  // what had arrived by then
    rig.control.Output(std::string("end"));
    EXPECT_EQ(rig.heard(), "end");
}

TEST(TermiosSerialControl, FlowControlStopsTheOutput) {
    PseudoTerminalRig rig;
    rig.control.HandShaking(1);
    rig.control.PortOpen(true);
    rig.say("\x13.");
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.InBufferCount() == 1; }));
    rig.control.Output(std::string("held"));
    EXPECT_EQ(rig.control.OutBufferCount(), 4);
    rig.say("\x11");
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.OutBufferCount() == 0; }));
    EXPECT_EQ(rig.heard(), "held");
    EXPECT_EQ(rig.control.Input(), Variant(std::string(".")));
}

TEST(TermiosSerialControl, MarksOfParityErrorsDoNotTouchTheData) {
    PseudoTerminalRig rig;
    rig.control.Settings("9600,E,8,1");
    rig.control.PortOpen(true);
    rig.say("\xff");
    rig.say(std::string("\xff\xff\0A\xff", 5));
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.InBufferCount() == 6; }));
    EXPECT_EQ(rig.control.Input(), Variant(std::string("\xff\xff\xff\0A\xff", 6)));
}

TEST(ParityMarks, AreReadAcrossAnyCut) {
    const Bytes marked{'a', 0xFF, 0xFF, 0xFF, 0x00, 'b', 0x00, 0xFF, 0x00, 0xFF, 0xFF, 0xFF, 'c'};
    for (std::size_t cut = 0; cut <= marked.size(); ++cut) {
        ParityMarks marks;
        auto bytes = marks.removed(marked.data(), cut, '?');
        const auto rest = marks.removed(marked.data() + cut, marked.size() - cut, '?');
        bytes.insert(bytes.end(), rest.begin(), rest.end());
        EXPECT_EQ(bytes, (Bytes{'a', 0xFF, '?', 0x00, '?', 0xFF, 'c'})) << cut;
    }
}

TEST(TermiosSerialControl, WaitsStillWaitAfterALoss) {
    PseudoTerminalRig rig;
    rig.control.PortOpen(true);
    rig.unplug();
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return !rig.control.PortOpen(); }));
    const auto before = rig.runtime.tick();
    rig.runtime.WaitActivity(10);
    EXPECT_GE(rig.runtime.tick() - before, 9u);
}

TEST(TermiosSerialControl, OutputNoticesTheLossItself) {
    PseudoTerminalRig rig;
    rig.control.PortOpen(true);
    rig.unplug();
    EXPECT_THROW(rig.control.Output(std::string("x")), PortError);
    EXPECT_FALSE(rig.control.PortOpen());
}

TEST(TermiosSerialControl, SaysWhyAPortDoesNotOpen) {
    using Kind = OpenFailure::Kind;
    const fakes::ScratchFolder folder;
    const fakes::PseudoTerminal line;
    LinuxRuntime runtime;
    fakes::FakePortMap map({{line.path().substr(5), "COM1"},
                            {"../" + folder.file("file", "").substr(1), "COM2"},
                            {"null", "COM3"},
                            {"nothing-there", "COM4"}});
    TermiosSerialControl first(runtime, map);
    first.PortOpen(true);
    const struct {
        std::int16_t number;
        Kind kind;
        int error;
    } cases[] = {{1, Kind::inUse, EWOULDBLOCK},
                 {2, Kind::noSerialPort, ENOTTY},
                 {3, Kind::noSerialPort, ENOTTY},
                 {4, Kind::notThere, ENOENT},
                 {5, Kind::notThere, ENOENT}};
    TermiosSerialControl second(runtime, map);
    for (const auto& c : cases) {
        second.CommPort(c.number);
        EXPECT_THROW(second.PortOpen(true), PortError);
        EXPECT_EQ(second.openFailure().kind, c.kind) << c.number;
        EXPECT_EQ(second.openFailure().systemError, c.error) << c.number;
        EXPECT_EQ(second.openFailure().path, map.devicePath(c.number).value_or("")) << c.number;
    }
    first.PortOpen(false);
    second.CommPort(1);
    second.PortOpen(true);
    EXPECT_EQ(second.openFailure().kind, Kind::none);
}

TEST(TermiosSerialControl, PortThatThisUserMayNotOpen) {
    PseudoTerminalRig rig;
    ASSERT_EQ(chmod(rig.line.path().c_str(), 0), 0);
    const bool isRoot = geteuid() == 0;
    ASSERT_TRUE(!isRoot || seteuid(65534) == 0);
    EXPECT_THROW(rig.control.PortOpen(true), PortError);
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    EXPECT_EQ(rig.control.openFailure().kind, OpenFailure::Kind::noPermission);
}

TEST(TermiosSerialControl, WordsOfTheSystemsErrors) {
    PseudoTerminalRig rig;
    EXPECT_EQ(rig.control.FormatMessage(22), "Invalid argument");
    EXPECT_EQ(rig.control.FormatMessage(99999), "");
}

}  // namespace
}  // namespace corvane
