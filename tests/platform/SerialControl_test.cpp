#include <gtest/gtest.h>

#include "SerialRigs.h"

namespace corvane {
namespace {

using Codes = std::vector<std::int32_t>;
using Rigs = testing::Types<FakeSerialRig, PseudoTerminalRig>;
TYPED_TEST_SUITE(SerialControlContract, Rigs);

TYPED_TEST(SerialControlContract, ReadsAndSendsEveryByteOfTextAndBytes) {
    auto& rig = this->side;
    auto& control = rig.control;
    rig.say("before");
    control.PortOpen(true);
    this->received("abcde");
    EXPECT_EQ(rig.heard(), "");
    EXPECT_EQ(control.Input(), Variant(std::string("abcde"))) << "nothing old, and all of it";
    EXPECT_EQ(control.Input(), Variant(std::string()));
    this->received(std::string("\0\x11\x13\x1a\xff", 5));
    control.InputMode(1);
    const std::pair<std::int32_t, Bytes> pieces[] = {{2, {0x00, 0x11}}, {10, {0x13, 0x1a, 0xff}}, {10, {}}};
    for (const auto& [length, bytes] : pieces) {
        control.InputLen(length);
        EXPECT_EQ(control.Input(), Variant(bytes));
    }
    control.Output(std::string("\x01\n\x04", 3));
    control.Output(Bytes{0x00, 0x11, 0x13, 0xff});
    EXPECT_EQ(this->heard(7), std::string("\x01\n\x04\x00\x11\x13\xff", 7));
    EXPECT_EQ(control.OutBufferCount(), 0);
    EXPECT_EQ(this->errorOf([&] { control.Output(std::int32_t{5}); }), 380);
}

TYPED_TEST(SerialControlContract, ClosedPortHoldsNothing) {
    auto& control = this->side.control;
    control.RThreshold(1);
    control.RTSEnable(true);
    control.HandShaking(3);
    control.PortOpen(true);
    control.Break(true);
    EXPECT_TRUE(control.Break() && control.RTSEnable() && control.DTREnable());
    EXPECT_FALSE(control.CTSHolding() || control.CDHolding() || control.DSRHolding());
    this->received("left");
    control.PortOpen(false);
    EXPECT_FALSE(control.PortOpen() || control.Break());
    EXPECT_EQ((Codes{control.InBufferCount(), control.OutBufferCount(), control.CommID()}), (Codes{0, 0, -1}));
    control.InBufferCount(0);
    EXPECT_EQ(this->errorOf([&] { control.Input(); }), 8018);
    EXPECT_EQ(this->errorOf([&] { control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(this->errorOf([&] { control.Break(true); }), 8018);
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(false); }), 8012);
    EXPECT_EQ(this->events(), Codes());
}

TYPED_TEST(SerialControlContract, PortInUseOrMissingDoesNotOpen) {
    using Kind = OpenFailure::Kind;
    auto& control = this->side.control;
    control.CommPort(2);
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(true); }), 8002);
    EXPECT_EQ(control.openFailure().kind, Kind::notThere);
    control.CommPort(1);
    control.PortOpen(true);
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(true); }), 8005);
    EXPECT_EQ(this->errorOf([&] { control.CommPort(2); }), 8000);
    EXPECT_EQ(this->errorOf([&] { control.InBufferSize(10); }), 8000);
    control.PortOpen(false);
    this->side.occupy();
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(true); }), 8005);
    EXPECT_EQ(control.openFailure().kind, Kind::inUse);
}

TYPED_TEST(SerialControlContract, RefusesValuesThatNoPortHas) {
    auto& control = this->side.control;
    const std::function<void()> calls[] = {
        [&] { control.InputMode(2); },           [&] { control.InputLen(-1); },
        [&] { control.HandShaking(4); },         [&] { control.RThreshold(-1); },
        [&] { control.SThreshold(-1); },         [&] { control.InBufferSize(0); },
        [&] { control.InBufferCount(1); },       [&] { control.OutBufferCount(1); },
        [&] { control.ParityReplace("ab"); },    [&] { control.CDHolding(true); },
        [&] { control.Settings("9600,X,8,1"); }, [&] { control.Settings("9600,N,8,3"); },
        [&] { control.Settings("9600,N,9,1"); }, [&] { control.Settings("9600,N,8,1,"); }};
    for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(this->errorOf(calls[i]), 380) << i;
    EXPECT_EQ(this->errorOf([&] { control.CommPort(0); }), 8002);
    EXPECT_EQ(control.Settings(), "19200,N,8,1");
}

TYPED_TEST(SerialControlContract, SettingsAndCommStateSetTheLineOrChangeNothing) {
    auto& control = this->side.control;
    control.Settings("57600N,e,8,2");
    control.PortOpen(true);
    EXPECT_EQ(this->line().baudRate, 57600u);
    EXPECT_TRUE(control.SetCommState(control.CommID(), {921600, 0, 8, 2}));
    EXPECT_EQ(this->line(), (CommState{921600, 0, 8, 2}));
    EXPECT_EQ(control.Settings(), "57600N,e,8,2");
    control.Settings("1500,N,8,1");
    const CommState set{1500, 0, 8, 0};
    for (const auto& state :
         {CommState{0, 0, 8, 0}, {9600, 0, 4, 0}, {9600, 0, 8, 1}, {9600, 0, 5, 2}, {9600, 5, 8, 0}}) {
        EXPECT_FALSE(control.SetCommState(control.CommID(), state));
    }
    EXPECT_NE(control.GetLastError(), 0u);
    EXPECT_EQ(this->line(), set);
    EXPECT_EQ(this->errorOf([&] { control.Settings("9600,N,4,1"); }), 380);
    EXPECT_EQ(control.Settings(), "1500,N,8,1");
    control.PortOpen(false);
    EXPECT_FALSE(control.SetCommState(control.CommID(), set));
    control.Settings("9600,N,4,1");
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(true); }), 380);
}

TYPED_TEST(SerialControlContract, EventsComeOnceEachAndOnlyInDoEvents) {
    auto& control = this->side.control;
    int calls = 0;
    control.OnComm = [&] { ++calls; };
    control.RThreshold(3);
    control.SThreshold(1);
    control.EOFEnable(true);
    control.PortOpen(true);
    this->received("ab");
    this->received("cc", 4);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(this->events(), Codes{2});
    EXPECT_EQ(this->events(), Codes());
    this->received("\x1a", 5);
    EXPECT_EQ(this->events(), (Codes{7, 2}));
    control.RThreshold(0);
    control.Output(std::string("abc"));
    ASSERT_TRUE(waitUntil(this->side.runtime, [&] { return control.OutBufferCount() == 0; }));
    EXPECT_EQ(this->events(), Codes{1});
}

TYPED_TEST(SerialControlContract, DiscardingAndClosingReachWhatTheSystemHolds) {
    auto& rig = this->side;
    rig.control.PortOpen(true);
    this->received("a");
    rig.say("b");
    rig.control.InBufferCount(0);
    this->received("c");
    EXPECT_EQ(rig.control.Input(), Variant(std::string("c")));
    rig.control.Output(std::string(300000, 'x'));
    rig.control.PortOpen(false);
    rig.control.PortOpen(true);
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    rig.heard();
    rig.control.Output(std::string("end"));
    EXPECT_EQ(this->heard(3), "end");
}

TYPED_TEST(SerialControlContract, FullReceiveBufferDropsTheRestAndSaysSo) {
    auto& control = this->side.control;
    control.InBufferSize(4);
    control.NullDiscard(true);
    control.PortOpen(true);
    this->received(std::string("a\0b\0cdef", 8), 4);
    EXPECT_EQ(this->events(), Codes{1008});
    EXPECT_EQ(control.Input(), Variant(std::string("abcd")));
}

TYPED_TEST(SerialControlContract, LostPortIsClosedAtOnce) {
    auto& control = this->side.control;
    control.RThreshold(1);
    control.PortOpen(true);
    this->received("abc");
    this->side.unplug();
    ASSERT_TRUE(waitUntil(this->side.runtime, [&] { return !control.PortOpen(); }));
    EXPECT_EQ((Codes{control.InBufferCount(), control.OutBufferCount(), control.CommID()}), (Codes{0, 0, -1}));
    EXPECT_EQ(control.Input(), Variant(std::string()));
    control.InBufferCount(0);
    const auto before = this->side.runtime.tick();
    this->side.runtime.WaitActivity(10);
    EXPECT_GE(this->side.runtime.tick() - before, 9u) << "waits still wait";
    EXPECT_EQ(this->errorOf([&] { control.Output(std::string("x")); }), 8020);
    EXPECT_EQ(this->events(), Codes());
    control.PortOpen(false);
    EXPECT_EQ(this->errorOf([&] { control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(this->errorOf([&] { control.PortOpen(true); }), 8002);
}

}  // namespace
}  // namespace corvane
