#include <gtest/gtest.h>

#include "SerialRigs.h"

namespace corvane {
namespace {

/// The number of the error that a call throws; 0 when it throws none.
int errorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const PortError& error) {
        return error.number();
    }
    return 0;
}

/// What every serial control does, the real one and the one of the tests.
template <typename Rig>
class SerialControlContract : public testing::Test {
protected:
    Rig rig;

    void received(const std::string& bytes) {
        rig.say(bytes);
        const auto expected = static_cast<std::int32_t>(bytes.size());
        ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.InBufferCount() == expected; }));
    }

    /// The codes of the events that are due now.
    std::vector<std::int32_t> events() {
        std::vector<std::int32_t> codes;
        rig.control.OnComm = [&] { codes.push_back(rig.control.CommEvent()); };
        rig.runtime.DoEvents();
        rig.control.OnComm = nullptr;
        return codes;
    }
};

using Rigs = testing::Types<FakeSerialRig, PseudoTerminalRig>;
TYPED_TEST_SUITE(SerialControlContract, Rigs);

TYPED_TEST(SerialControlContract, StartsClosedWithItsDefaults) {
    auto& control = this->rig.control;
    EXPECT_FALSE(control.PortOpen());
    EXPECT_EQ(control.CommPort(), 1);
    EXPECT_EQ(control.CommID(), -1);
    EXPECT_EQ(control.Settings(), "9600,N,8,1");
    EXPECT_EQ(control.InBufferSize(), 4096);
    EXPECT_EQ(control.OutBufferSize(), 512);
    EXPECT_EQ(control.InputMode(), 0);
    EXPECT_EQ(control.InputLen(), 0);
    EXPECT_TRUE(control.DTREnable());
    EXPECT_FALSE(control.RTSEnable());
    EXPECT_EQ(control.HandShaking(), 0);
    EXPECT_EQ(control.ParityReplace(), "?");
}

TYPED_TEST(SerialControlContract, ReadsTextOrBytesInPieces) {
    auto& control = this->rig.control;
    control.PortOpen(true);
    this->received("abcde");
    EXPECT_EQ(control.Input(), Variant(std::string("abcde")));
    EXPECT_EQ(control.Input(), Variant(std::string()));
    this->received(std::string("\0\x11\x13\x1a\xff", 5));
    control.InputMode(1);
    control.InputLen(2);
    EXPECT_EQ(control.Input(), Variant(Bytes{0x00, 0x11}));
    EXPECT_EQ(control.InBufferCount(), 3);
    control.InputLen(10);
    EXPECT_EQ(control.Input(), Variant(Bytes{0x13, 0x1a, 0xff}));
    EXPECT_EQ(control.Input(), Variant(Bytes{}));
}

TYPED_TEST(SerialControlContract, SendsEveryByteOfTextAndBytes) {
    auto& rig = this->rig;
    rig.control.PortOpen(true);
    rig.control.Output(std::string("\x01\n\x04", 3));
    rig.control.Output(Bytes{0x00, 0x11, 0x13, 0xff});
    std::string heard;
    EXPECT_TRUE(waitUntil(rig.runtime, [&] { return (heard += rig.heard()).size() == 7; }));
    EXPECT_EQ(heard, std::string("\x01\n\x04\x00\x11\x13\xff", 7));
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    EXPECT_EQ(errorOf([&] { rig.control.Output(std::int32_t{5}); }), 380);
}

TYPED_TEST(SerialControlContract, ClosedPortHoldsNothing) {
    auto& control = this->rig.control;
    control.RThreshold(1);
    control.PortOpen(true);
    this->received("left");
    control.PortOpen(false);
    EXPECT_FALSE(control.PortOpen());
    EXPECT_EQ(control.InBufferCount(), 0);
    EXPECT_EQ(control.OutBufferCount(), 0);
    EXPECT_EQ(control.CommID(), -1);
    control.InBufferCount(0);
    EXPECT_EQ(errorOf([&] { control.Input(); }), 8018);
    EXPECT_EQ(errorOf([&] { control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(errorOf([&] { control.Break(true); }), 8018);
    EXPECT_EQ(errorOf([&] { control.PortOpen(false); }), 8012);
    EXPECT_TRUE(this->events().empty());
}

TYPED_TEST(SerialControlContract, OpeningFindsNothingOld) {
    auto& rig = this->rig;
    rig.say("before");
    rig.control.PortOpen(true);
    this->received("now");
    EXPECT_EQ(rig.control.Input(), Variant(std::string("now")));
    EXPECT_EQ(rig.heard(), "");
}

TYPED_TEST(SerialControlContract, PortInUseOrMissingDoesNotOpen) {
    auto& rig = this->rig;
    rig.control.CommPort(2);
    EXPECT_EQ(errorOf([&] { rig.control.PortOpen(true); }), 8002);
    EXPECT_EQ(rig.control.openFailure().kind, OpenFailure::Kind::notThere);
    rig.control.CommPort(1);
    rig.control.PortOpen(true);
    EXPECT_EQ(rig.control.openFailure().kind, OpenFailure::Kind::none);
    EXPECT_EQ(errorOf([&] { rig.control.PortOpen(true); }), 8005);
    EXPECT_EQ(errorOf([&] { rig.control.CommPort(2); }), 8000);
    EXPECT_EQ(errorOf([&] { rig.control.InBufferSize(10); }), 8000);
    EXPECT_TRUE(rig.control.PortOpen());
    rig.control.PortOpen(false);
    rig.occupy();
    EXPECT_EQ(errorOf([&] { rig.control.PortOpen(true); }), 8005);
    EXPECT_EQ(rig.control.openFailure().kind, OpenFailure::Kind::inUse);
    EXPECT_FALSE(rig.control.PortOpen());
}

TYPED_TEST(SerialControlContract, RefusesValuesThatNoPortHas) {
    auto& control = this->rig.control;
    const std::function<void()> calls[] = {
        [&] { control.InputMode(2); },           [&] { control.InputLen(-1); },
        [&] { control.HandShaking(4); },         [&] { control.RThreshold(-1); },
        [&] { control.SThreshold(-1); },         [&] { control.InBufferSize(0); },
        [&] { control.InBufferCount(1); },       [&] { control.OutBufferCount(1); },
        [&] { control.ParityReplace("ab"); },    [&] { control.CDHolding(true); },
        [&] { control.Settings("9600"); },       [&] { control.Settings("0,N,8,1"); },
        [&] { control.Settings("9600,X,8,1"); }, [&] { control.Settings("9600,N,9,1"); },
        [&] { control.Settings("9600,N,8,3"); }, [&] { control.Settings("9600,N,8,1,"); },
    };
    for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(errorOf(calls[i]), 380) << i;
    EXPECT_EQ(errorOf([&] { control.CommPort(0); }), 8002);
    EXPECT_EQ(control.Settings(), "9600,N,8,1");
}

TYPED_TEST(SerialControlContract, SettingsAndCommStateSetTheLine) {
    auto& control = this->rig.control;
    control.Settings("57600N,e,8,2");
    control.PortOpen(true);
    CommState line;
    ASSERT_TRUE(control.GetCommState(control.CommID(), line));
    EXPECT_EQ(line.baudRate, 57600u);
    EXPECT_EQ(line.stopBits, 2);
    control.Settings("1500,N,8,1");
    ASSERT_TRUE(control.GetCommState(control.CommID(), line));
    EXPECT_EQ(line, (CommState{1500, 0, 8, 0}));
    EXPECT_TRUE(control.SetCommState(control.CommID(), {921600, 0, 8, 2}));
    ASSERT_TRUE(control.GetCommState(control.CommID(), line));
    EXPECT_EQ(line, (CommState{921600, 0, 8, 2}));
    EXPECT_EQ(control.Settings(), "1500,N,8,1");
}

TYPED_TEST(SerialControlContract, ImpossibleLineIsRefusedAndChangesNothing) {
    auto& control = this->rig.control;
    control.PortOpen(true);
    const CommState impossible[] = {{0, 0, 8, 0}, {9600, 0, 4, 0}, {9600, 0, 8, 1}, {9600, 0, 5, 2}, {9600, 5, 8, 0}};
    CommState line;
    for (const auto& state : impossible) {
        EXPECT_FALSE(control.SetCommState(control.CommID(), state));
        EXPECT_NE(control.GetLastError(), 0u);
        ASSERT_TRUE(control.GetCommState(control.CommID(), line));
        EXPECT_EQ(line, (CommState{9600, 0, 8, 0}));
    }
    EXPECT_EQ(errorOf([&] { control.Settings("9600,N,4,1"); }), 380);
    EXPECT_EQ(control.Settings(), "9600,N,8,1");
    EXPECT_FALSE(control.GetCommState(control.CommID() + 1, line));
    control.PortOpen(false);
    EXPECT_FALSE(control.SetCommState(control.CommID(), {9600, 0, 8, 0}));
    control.Settings("9600,N,4,1");
    EXPECT_EQ(errorOf([&] { control.PortOpen(true); }), 380);
    EXPECT_FALSE(control.PortOpen());
}

TYPED_TEST(SerialControlContract, EventsComeOnceEachAndOnlyInDoEvents) {
    auto& rig = this->rig;
    int calls = 0;
    rig.control.OnComm = [&] { ++calls; };
    rig.control.RThreshold(3);
    rig.control.EOFEnable(true);
    rig.control.PortOpen(true);
    this->received("ab");
    for (const int count : {3, 4}) {
        rig.say("c");
        ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.InBufferCount() == count; }));
    }
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(this->events(), std::vector<std::int32_t>{2});
    EXPECT_TRUE(this->events().empty());
    rig.say("\x1a");
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return rig.control.InBufferCount() == 5; }));
    EXPECT_EQ(this->events(), (std::vector<std::int32_t>{7, 2}));
}

TYPED_TEST(SerialControlContract, DiscardingTakesWhatTheSystemHoldsToo) {
    auto& rig = this->rig;
    rig.control.PortOpen(true);
    this->received("a");
    rig.say("b");
    rig.control.InBufferCount(0);
    EXPECT_EQ(rig.control.InBufferCount(), 0);
    this->received("c");
    EXPECT_EQ(rig.control.Input(), Variant(std::string("c")));
}

TYPED_TEST(SerialControlContract, ClosingDropsWhatIsNotOnTheLine) {
    auto& rig = this->rig;
    rig.control.PortOpen(true);
    rig.control.Output(std::string(300000, 'x'));
    rig.control.PortOpen(false);
    rig.control.PortOpen(true);
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    rig.heard();
    rig.control.Output(std::string("end"));
    std::string heard;
    EXPECT_TRUE(waitUntil(rig.runtime, [&] { return (heard += rig.heard()).size() >= 3; }));
    EXPECT_EQ(heard, "end");
}

TYPED_TEST(SerialControlContract, SendEventWhenLessThanTheThresholdIsLeft) {
    auto& control = this->rig.control;
    control.SThreshold(1);
    control.PortOpen(true);
    control.Output(std::string("abc"));
    ASSERT_TRUE(waitUntil(this->rig.runtime, [&] { return control.OutBufferCount() == 0; }));
    EXPECT_EQ(this->events(), std::vector<std::int32_t>{1});
}

TYPED_TEST(SerialControlContract, FullReceiveBufferDropsTheRestAndSaysSo) {
    auto& control = this->rig.control;
    control.InBufferSize(4);
    control.NullDiscard(true);
    control.PortOpen(true);
    this->rig.say(std::string("a\0b\0cdef", 8));
    ASSERT_TRUE(waitUntil(this->rig.runtime, [&] { return control.InBufferCount() == 4; }));
    EXPECT_EQ(this->events(), std::vector<std::int32_t>{1008});
    EXPECT_EQ(control.Input(), Variant(std::string("abcd")));
    this->received("gh");
    control.InBufferCount(0);
    EXPECT_EQ(control.Input(), Variant(std::string()));
}

TYPED_TEST(SerialControlContract, LostPortIsClosedAtOnce) {
    auto& rig = this->rig;
    rig.control.RThreshold(1);
    rig.control.PortOpen(true);
    this->received("abc");
    rig.unplug();
    ASSERT_TRUE(waitUntil(rig.runtime, [&] { return !rig.control.PortOpen(); }));
    EXPECT_EQ(rig.control.InBufferCount(), 0);
    EXPECT_EQ(rig.control.OutBufferCount(), 0);
    EXPECT_EQ(rig.control.CommID(), -1);
    EXPECT_EQ(rig.control.Input(), Variant(std::string()));
    rig.control.InBufferCount(0);
    rig.control.RTSEnable(false);
    EXPECT_EQ(errorOf([&] { rig.control.Output(std::string("x")); }), 8020);
    EXPECT_TRUE(this->events().empty());
    rig.control.PortOpen(false);
    EXPECT_EQ(errorOf([&] { rig.control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(errorOf([&] { rig.control.PortOpen(true); }), 8002);
}

TYPED_TEST(SerialControlContract, LinesAndHandShakingAreKeptAcrossOpening) {
    auto& control = this->rig.control;
    control.RTSEnable(true);
    control.DTREnable(false);
    control.HandShaking(3);
    control.PortOpen(true);
    control.Break(true);
    EXPECT_TRUE(control.RTSEnable() && !control.DTREnable() && control.Break());
    EXPECT_EQ(control.HandShaking(), 3);
    EXPECT_FALSE(control.CTSHolding() || control.CDHolding() || control.DSRHolding());
    control.PortOpen(false);
    EXPECT_FALSE(control.Break());
    EXPECT_TRUE(control.RTSEnable());
}

}  // namespace
}  // namespace corvane
