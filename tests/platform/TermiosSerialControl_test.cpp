#include "platform/linux/serial/TermiosSerialControl.h"

#include <asm/termbits.h>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/linux/serial/LineSettings.h"
#include "support/FakePortMap.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

using Codes = std::vector<std::int32_t>;

/// A pseudo-terminal whose far side the test plays; the near side exists until it is unplugged.
struct PseudoTerminal {
    explicit PseudoTerminal(bool isRaw) {
        grantpt(far);
        unlockpt(far);
        if (isRaw) set([](termios2& line) { line.c_iflag = line.c_oflag = line.c_lflag = 0; });
    }
    ~PseudoTerminal() { unplug(); }

    std::string device() const { return std::string(ptsname(far)).substr(5); }

    /// Changes the line's settings; how they are then.
    termios2 set(const std::function<void(termios2&)>& change) const {
        termios2 line{};
        ioctl(far, TCGETS2, &line);
        change(line);
        ioctl(far, TCSETS2, &line);
        return line;
    }

    void say(const std::string& bytes) const {
        EXPECT_EQ(::write(far, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /// All that has come in since the last call.
    std::string heard() const {
        std::string all;
        char chunk[4096];
        for (ssize_t count = 0; (count = ::read(far, chunk, sizeof chunk)) > 0;) {
            all.append(chunk, static_cast<std::size_t>(count));
        }
        return all;
    }

    void unplug() { ::close(std::exchange(far, -1)); }

    int far = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
};

/// A control with a device at COM1 that the test plays, and no COM2.
struct Termios : testing::Test {
    LinuxRuntime runtime;
    PseudoTerminal device{true};
    fakes::FakePortMap map;
    TermiosSerialControl control{runtime, map}, other{runtime, map};

    Termios() { map.entries = {{device.device(), "COM1"}}; }

    template <class Condition>
    bool waitUntil(Condition condition) {
        for (int waits = 0; waits < 500 && !condition(); ++waits) runtime.WaitActivity(10);
        return condition();
    }

    /// The number of the error that a call throws; 0 when it throws none.
    static int errorOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const PortError& error) {
            return error.number();
        }
        return 0;
    }

    /// Says it and waits until so many bytes are in the buffer.
    void received(const std::string& bytes, std::size_t count = 0) {
        device.say(bytes);
        const auto all = static_cast<std::int32_t>(count ? count : bytes.size());
        ASSERT_TRUE(waitUntil([&] { return control.InBufferCount() == all; }));
    }

    /// All that the far side hears within the time in which this text should come.
    std::string heard(std::size_t size) {
        std::string text;
        EXPECT_TRUE(waitUntil([&] { return (text += device.heard()).size() >= size; }));
        return text;
    }

    /// The codes of the events that are due now.
    Codes events() {
        Codes codes;
        control.OnComm = [&] { codes.push_back(control.CommEvent()); };
        runtime.DoEvents();
        control.OnComm = nullptr;
        return codes;
    }

    CommState line() {
        CommState state;
        EXPECT_TRUE(control.GetCommState(control.CommID(), state));
        return state;
    }
};

TEST_F(Termios, ReadsAndSendsEveryByteOfTextAndBytes) {
    device.say("before");
    control.PortOpen(true);
    received("abcde");
    EXPECT_EQ(device.heard(), "");
    EXPECT_EQ(control.Input(), Variant(std::string("abcde"))) << "nothing old, and all of it";
    EXPECT_EQ(control.Input(), Variant(std::string()));
    received(std::string("\0\x11\x13\x1a\xff", 5));
    control.InputMode(1);
    const std::pair<std::int32_t, Bytes> pieces[] = {{2, {0x00, 0x11}}, {10, {0x13, 0x1a, 0xff}}, {10, {}}};
    for (const auto& [length, bytes] : pieces) {
        control.InputLen(length);
        EXPECT_EQ(control.Input(), Variant(bytes));
    }
    control.Output(std::string("\x01\n\x04", 3));
    control.Output(Bytes{0x00, 0x11, 0x13, 0xff});
    EXPECT_EQ(heard(7), std::string("\x01\n\x04\x00\x11\x13\xff", 7));
    EXPECT_EQ(control.OutBufferCount(), 0);
    EXPECT_EQ(errorOf([&] { control.Output(std::int32_t{5}); }), 380);
}

TEST_F(Termios, ClosedPortHoldsNothing) {
    control.RThreshold(1);
    control.PortOpen(true);
    control.Break(true);
    received("left");
    control.PortOpen(false);
    EXPECT_FALSE(control.PortOpen() || control.Break());
    EXPECT_EQ((Codes{control.InBufferCount(), control.OutBufferCount(), control.CommID()}), (Codes{0, 0, -1}));
    control.InBufferCount(0);
    EXPECT_EQ(errorOf([&] { control.Input(); }), 8018);
    EXPECT_EQ(errorOf([&] { control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(errorOf([&] { control.Break(true); }), 8018);
    EXPECT_EQ(errorOf([&] { control.PortOpen(false); }), 8012);
    EXPECT_EQ(events(), Codes());
}

TEST_F(Termios, SaysWhyAPortDoesNotOpen) {
    using Kind = OpenFailure::Kind;
    const fakes::ScratchFolder folder;
    map.entries.push_back({"../" + folder.file("file", "").substr(1), "COM2"});
    map.list();
    other.PortOpen(true);
    const struct {
        std::int16_t number;
        Kind kind;
        int systemError, portError;
    } cases[] = {
        {1, Kind::inUse, EWOULDBLOCK, 8005}, {2, Kind::noSerialPort, ENOTTY, 8002}, {3, Kind::notThere, ENOENT, 8002}};
    for (const auto& [number, kind, systemError, portError] : cases) {
        control.CommPort(number);
        EXPECT_EQ(errorOf([&] { control.PortOpen(true); }), portError) << number;
        EXPECT_EQ(control.openFailure().kind, kind) << number;
        EXPECT_EQ(control.openFailure().systemError, systemError) << number;
        EXPECT_EQ(control.openFailure().path, map.devicePath(number).value_or("")) << number;
    }
    other.PortOpen(false);
    control.CommPort(1);
    control.PortOpen(true);
    EXPECT_EQ(control.openFailure().kind, Kind::none);
    EXPECT_EQ(errorOf([&] { control.PortOpen(true); }), 8005);
    EXPECT_EQ(errorOf([&] { control.CommPort(2); }), 8000);
    EXPECT_EQ(errorOf([&] { control.InBufferSize(10); }), 8000);
    EXPECT_EQ(control.FormatMessage(22) + control.FormatMessage(99999), "Invalid argument");
}

TEST_F(Termios, RefusesValuesThatNoPortHas) {
    const std::function<void()> calls[] = {
        [&] { control.InputMode(2); },           [&] { control.InputLen(-1); },
        [&] { control.HandShaking(4); },         [&] { control.RThreshold(-1); },
        [&] { control.SThreshold(-1); },         [&] { control.InBufferSize(0); },
        [&] { control.InBufferCount(1); },       [&] { control.OutBufferCount(1); },
        [&] { control.ParityReplace("ab"); },    [&] { control.CDHolding(true); },
        [&] { control.Settings("9600,X,8,1"); }, [&] { control.Settings("9600,N,8,3"); },
        [&] { control.Settings("9600,N,9,1"); }, [&] { control.Settings("9600,N,8,1,"); }};
    for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(errorOf(calls[i]), 380) << i;
    EXPECT_EQ(errorOf([&] { control.CommPort(0); }), 8002);
    EXPECT_EQ(control.Settings(), "19200,N,8,1");
}

TEST_F(Termios, SettingsAndCommStateSetTheLineOrChangeNothing) {
    control.Settings("57600N,e,8,2");
    control.PortOpen(true);
    EXPECT_EQ(line().baudRate, 57600u);
    EXPECT_TRUE(control.SetCommState(control.CommID(), {921600, 0, 8, 2}));
    EXPECT_EQ(line(), (CommState{921600, 0, 8, 2}));
    EXPECT_EQ(control.Settings(), "57600N,e,8,2");
    for (const std::uint32_t rate : {110u, 128000u, 1000050u, 1500u}) {
        control.Settings(std::to_string(rate) + ",N,8,1");
        EXPECT_EQ(device.set([](termios2&) {}).c_ospeed, rate);
        EXPECT_EQ(line(), (CommState{rate, 0, 8, 0}));
    }
    for (const auto& state :
         {CommState{0, 0, 8, 0}, {9600, 0, 4, 0}, {9600, 0, 8, 1}, {9600, 0, 5, 2}, {9600, 5, 8, 0}}) {
        EXPECT_FALSE(control.SetCommState(control.CommID(), state));
    }
    EXPECT_NE(control.GetLastError(), 0u);
    EXPECT_EQ(line(), (CommState{1500, 0, 8, 0}));
    EXPECT_EQ(errorOf([&] { control.Settings("9600,N,4,1"); }), 380);
    EXPECT_EQ(control.Settings(), "1500,N,8,1");
    control.Settings("115200,N,8,1");
    device.set([](termios2& line) { line.c_ispeed = line.c_ospeed = 115385; });  // as near as a divider may come
    EXPECT_EQ(line().baudRate, 115200u);
    control.PortOpen(false);
    EXPECT_FALSE(control.SetCommState(control.CommID(), {1500, 0, 8, 0}));
    control.Settings("9600,N,4,1");
    EXPECT_EQ(errorOf([&] { control.PortOpen(true); }), 380);
}

TEST_F(Termios, EventsComeOnceEachAndOnlyInDoEvents) {
    int calls = 0;
    control.OnComm = [&] { ++calls; };
    control.RThreshold(3);
    control.SThreshold(1);
    control.EOFEnable(true);
    control.PortOpen(true);
    received("ab");
    received("cc", 4);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(events(), Codes{2});
    EXPECT_EQ(events(), Codes());
    received("\x1a", 5);
    EXPECT_EQ(events(), (Codes{7, 2}));
    control.RThreshold(0);
    control.Output(std::string("abc"));
    ASSERT_TRUE(waitUntil([&] { return control.OutBufferCount() == 0; }));
    EXPECT_EQ(events(), Codes{1});
}

TEST_F(Termios, OutputNeverBlocksAndGoesOutWholeOrIsDiscarded) {
    control.PortOpen(true);
    std::string image;
    for (int i = 0; image.size() < 300000; ++i) image += std::to_string(i);
    control.Output(image);
    EXPECT_GT(control.OutBufferCount(), 100000);
    EXPECT_EQ(heard(image.size()), image);
    EXPECT_EQ(control.OutBufferCount(), 0);
    control.Output(image);
    control.PortOpen(false);
    control.PortOpen(true);
    EXPECT_EQ(control.OutBufferCount(), 0);
    device.heard();
    control.Output(std::string("end"));
    EXPECT_EQ(heard(3), "end");
}

TEST_F(Termios, ReceivesIntoItsBufferWhatFitsAndWasNotDiscarded) {
    control.InBufferSize(4);
    control.NullDiscard(true);
    control.PortOpen(true);
    received("a");
    device.say("b");
    control.InBufferCount(0);
    received(std::string("a\0b\0cdef", 8), 4);
    EXPECT_EQ(events(), Codes{1008});
    EXPECT_EQ(control.Input(), Variant(std::string("abcd")));
}

TEST_F(Termios, LostPortIsClosedAtOnce) {
    control.RThreshold(1);
    control.PortOpen(true);
    received("abc");
    device.unplug();
    ASSERT_TRUE(waitUntil([&] { return !control.PortOpen(); }));
    EXPECT_EQ((Codes{control.InBufferCount(), control.OutBufferCount(), control.CommID()}), (Codes{0, 0, -1}));
    EXPECT_EQ(control.Input(), Variant(std::string()));
    control.InBufferCount(0);
    const auto before = runtime.tick();
    runtime.WaitActivity(10);
    EXPECT_GE(runtime.tick() - before, 9u) << "waits still wait";
    EXPECT_EQ(errorOf([&] { control.Output(std::string("x")); }), 8020);
    EXPECT_EQ(events(), Codes());
    control.PortOpen(false);
    EXPECT_EQ(errorOf([&] { control.Output(std::string("x")); }), 8018);
    EXPECT_EQ(errorOf([&] { control.PortOpen(true); }), 8002);
}

TEST_F(Termios, NoticesALossWhenItWrites) {
    control.PortOpen(true);
    device.unplug();
    EXPECT_EQ(errorOf([&] { control.Output(std::string("x")); }), 8020);
    EXPECT_FALSE(control.PortOpen());
}

TEST_F(Termios, NothingIsSentOrEchoedByOpeningAndReceiving) {
    const PseudoTerminal cooked(false);  // with echo and signals, as a terminal starts
    map.entries = {{cooked.device(), "COM1"}};
    map.list();
    control.RTSEnable(true);
    control.PortOpen(true);
    control.Settings("57600,E,7,2");
    cooked.say("hello\r\n\x03\x04");
    ASSERT_TRUE(waitUntil([&] { return control.InBufferCount() == 9; }));
    EXPECT_EQ(control.Input(), Variant(std::string("hello\r\n\x03\x04")));
    EXPECT_EQ(cooked.heard(), "");
}

TEST_F(Termios, FlowControlStopsTheOutput) {
    control.HandShaking(1);
    control.PortOpen(true);
    received("\x13.", 1);
    control.Output(std::string("held"));
    EXPECT_EQ(control.OutBufferCount(), 4);
    device.say("\x11");
    EXPECT_EQ(heard(4), "held");
    EXPECT_EQ(control.Input(), Variant(std::string(".")));
}

TEST_F(Termios, MarksOfParityErrorsDoNotTouchTheData) {
    control.Settings("9600,E,8,1");
    control.PortOpen(true);
    device.say("\xff");
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

}  // namespace corvane::tests
