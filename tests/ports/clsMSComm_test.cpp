#include "ports/clsMSComm.h"

#include <gtest/gtest.h>

#include "support/ScriptedPeer.h"
#include "support/SerialBench.h"

namespace corvane::tests {

using TextPairs = std::vector<std::pair<const char*, const char*>>;

struct Serial : ::testing::Test {
    Serial() {
        bench.plug(1, peer);
        bench.plug(5, peer);
        port.CommPort("COM1");
        port.Settings("19200,N,8,1");
    }

    /// What the settings become, starting from 19200,N,8,1 with the port open or closed.
    std::string after(const std::string& change, bool open) {
        port.PortOpen(false);
        port.Settings("19200,N,8,1");
        port.PortOpen(open);
        port.Settings(change);
        return port.Settings();
    }

    /// What is listed at these places, one after the other.
    std::string listed(std::initializer_list<std::int32_t> places) {
        std::string text;
        for (const auto place : places) text += port.EnumCommPort(place) + " ";
        return text;
    }

    fakes::SerialBench bench;
    fakes::ScriptedPeer peer;
    clsMSComm& port = bench.port;
};

TEST_F(Serial, SelectsAPortByNameOrNumber) {
    const TextPairs choices = {{"5", "COM5"}, {"COM1", "COM1"}, {"5", "COM5"},     {"com1", "COM5"},
                               {"", "COM5"},  {"LPT1", "COM5"}, {"99999", "COM5"}, {"1", "COM1"}};
    for (const auto& [text, selected] : choices) {
        port.CommPort(text);
        EXPECT_EQ(port.CommPort(), selected) << text;
    }
    port.PortOpen(true);
    port.CommPort("5");  // the control refuses, and nothing is closed
    EXPECT_EQ(port.CommPort(), "COM1");
    EXPECT_TRUE(port.PortOpen());
    port.CommPort("COM5");
    EXPECT_EQ(port.CommPort(), "COM5");
    EXPECT_FALSE(port.PortOpen());
}

TEST_F(Serial, ChangesTheSettingsItIsGiven) {
    const TextPairs changes = {{"7,E", "19200,E,7,1"},      {"1.5", "19200,N,8,1.5"}, {"8,N,2,115200", "115200,N,8,2"},
                               {"O,300,4,M", "300,M,4,1"},  {"   ", "19200,N,8,1"},   {" 4800 ", "4800,N,8,1"},
                               {"X,junk,S", "19200,S,8,1"}, {"3", "3,N,8,1"},         {"57600N,8,1", "57600N,N,8,1"}};
    for (const auto& [change, result] : changes) EXPECT_EQ(after(change, false), result) << change;
    EXPECT_EQ(after("57600N,8,1", true), "57600,N,8,1");
    EXPECT_EQ(after("3", true), "19200,N,8,1");  // the line keeps what it has, the next opening starts with 3
    port.SetCOMMSettings(port.CommID(), "300,E,7,2");
    port.Settings("4800");
    EXPECT_EQ(port.Settings(), "4800,E,7,2");

    fakes::FakeSerialControl control(bench.runtime);
    control.Settings("300,E,7,1");
    clsMSComm other(bench.map);
    other.Attach(&control, nullptr);
    control.Settings("9600,N,8,1");
    other.PortOpen(true);  // there is no such port
    EXPECT_EQ(control.Settings(), "300,E,7,1") << "those of the control that it was attached to";
    other.Attach(nullptr, nullptr);
    EXPECT_FALSE(control.OnComm);
}

TEST_F(Serial, AppliesOnlySoundSettings) {
    port.PortOpen(true);
    const auto handle = port.CommID();
    const auto changes = bench.control.lineChanges().size();
    for (const char* bad : {"9600,N,8", "9600,N,8,1,1", "9675,N,8,1", "-150,N,8,1", "9600,X,8,1", "9600,NN,8,1",
                            "9600,N,3,1", "9600,N,9,1", "9600,N,8,3", "9600,N,8,1.2"}) {
        EXPECT_FALSE(port.SetCOMMSettings(handle, bad)) << bad;
    }
    EXPECT_EQ(bench.control.lineChanges().size(), changes);
    const struct {
        const char *settings, *worded;
        CommState line;
    } cases[] = {{"110,n,8,1", "110,N,8,1", {110, 0, 8, 0}},
                 {"1500,O,7,2", "1500,O,7,2", {1500, 1, 7, 2}},
                 {"128000,E,5,1.5", "128000,E,5,1.5", {128000, 2, 5, 1}},
                 {"56000,M,6,1", "56000,M,6,1", {56000, 3, 6, 0}},
                 {"921600,S,8,1", "921600,S,8,1", {921600, 4, 8, 0}},
                 {"57600N,N,7.6,1", "57600,N,8,1", {57600, 0, 8, 0}},
                 {"149.5,N,8,1", "150,N,8,1", {150, 0, 8, 0}}};
    for (const auto& [settings, worded, line] : cases) {
        EXPECT_TRUE(port.SetCOMMSettings(handle, settings)) << settings;
        EXPECT_EQ(bench.control.line(), line) << settings;
        EXPECT_EQ(port.GetCOMMSettings(handle), worded);
    }
    EXPECT_FALSE(port.SetCOMMSettings(handle + 1, "9600,N,8,1"));
    EXPECT_EQ(port.GetCOMMSettings(handle + 1), "");
    bench.control.refuse([](const CommState&) { return true; });
    EXPECT_FALSE(port.SetCOMMSettings(handle, "9600,N,8,1"));
    port.SetCOMMSettings(handle, "0,N,8,1");
    EXPECT_EQ(bench.control.lineChanges().back().baudRate, 0U) << "a rate of zero is passed to the line";
}

TEST_F(Serial, KeepsItsSettingsAndPutsTheLineRight) {
    port.PortOpen(true);
    port.Settings("38400,E,7,2");
    port.PortOpen(false);
    EXPECT_EQ(port.Settings(), "38400,E,7,2");
    bench.control.markBusy(1);
    port.PortOpen(true);
    EXPECT_FALSE(port.PortOpen());
    bench.control.markBusy(1, false);
    port.PortOpen(true);
    port.PortOpen(true);  // twice is no error to the caller
    EXPECT_TRUE(port.PortOpen());
    EXPECT_EQ(port.Settings(), "38400,E,7,2");
    port.Settings("57600,N,8,1");
    fakes::ScriptedPeer next;
    peer.unplugAt(bench.runtime.ms());
    bench.runtime.Sleep(5);
    EXPECT_FALSE(port.PortOpen());
    bench.control.plug(1, next);
    port.PortOpen(true);
    EXPECT_EQ(port.Settings(), "57600,N,8,1") << "also after a loss";
    port.Settings("4800,N,8,1");
    for (const bool rts : {true, false}) {  // when a line signal is set
        port.SetCOMMSettings(port.CommID(), "300,N,8,1");
        rts ? port.RTSEnable(true) : port.DTREnable(false);
        EXPECT_EQ(bench.control.line(), (CommState{4800, 0, 8, 0}));
    }
    EXPECT_TRUE(port.RTSEnable() && !port.DTREnable());
}

TEST_F(Serial, TellsOfEventsAndReopensAfterAFramingErrorAlone) {
    bench.control.InBufferSize(2);
    port.RThreshold(1);
    port.PortOpen(true);
    const auto handle = port.CommID();
    std::vector<std::pair<std::int32_t, bool>> told;  // the code, and whether the port is open anew
    bench.event.OnComm = [&] { told.emplace_back(port.CommEvent(), port.PortOpen() && port.CommID() != handle); };
    peer.say(bench.runtime.ms() + 1, "xyz");
    bench.runtime.Sleep(5);
    bench.runtime.DoEvents();
    bench.control.raiseFramingError();
    bench.runtime.WaitActivity(1);
    bench.runtime.DoEvents();
    EXPECT_EQ(told, (decltype(told){{1008, false}, {2, false}, {1004, true}}));
    EXPECT_EQ(port.Settings(), "19200,N,8,1");
}

TEST_F(Serial, RecognisesItsNames) {
    for (const char* mine : {"COM1", "COM16", "com3", "Com 7", "COM2.4"}) EXPECT_TRUE(port.IsMyCommPort(mine)) << mine;
    for (const char* other : {"", "COM", "COM0", "COM17", "HID1", "COM1x"})
        EXPECT_FALSE(port.IsMyCommPort(other)) << other;
}

TEST_F(Serial, ListsPortsByNumberAsFarAsTheyFit) {
    auto& entries = bench.map.entries;
    entries = {{"a", "COM10"}, {"b", "COM9"}, {"c", "com1"},
               {"d", "LPT1"},  {"e", "COM2"}, {std::string(64, 'x'), "COM3"},
               {"f", "COM4"}};
    EXPECT_EQ(port.NumberOfCommPorts(), 3);
    EXPECT_EQ(listed({0, 1, 2, 3, -1}) + port.EnumCommPortEx(0), "COM2 COM9 COM10   ");
    entries = {{std::string(63, 'x'), "COM1234"}, {"b", "COM12345"}, {"c", "COM1"}};
    EXPECT_EQ(listed({0, 1}), "COM1234  ");
    entries.clear();
    for (int n = 1; n <= 300; ++n) entries.push_back({"t", "COM" + std::to_string(n)});
    EXPECT_EQ(port.NumberOfCommPorts(), 256);
    bench.map.isReadable = false;
    EXPECT_EQ(port.NumberOfCommPorts(), 0);
}

TEST_F(Serial, LooksAfreshOnlyWhenAListIsReadFromItsStart) {
    EXPECT_EQ(port.NumberOfCommPorts(), 2);
    EXPECT_EQ(listed({0, 1}), "COM1 COM5 ");
    EXPECT_EQ(bench.map.listings, 1);
    bench.list(7);
    EXPECT_EQ(listed({2, 0, 2}), " COM1 COM7 ");
    EXPECT_EQ(bench.map.listings, 2);
    bench.map.entries.clear();
    EXPECT_EQ(port.NumberOfCommPorts(), 0);
    EXPECT_EQ(port.EnumCommPort(1), "");  // looks again, as nothing was there
    EXPECT_EQ(bench.map.listings, 4);
}

TEST_F(Serial, GivesTheSystemsWords) {
    bench.control.message(5, "Access is denied.\r\n");
    bench.control.message(0xAB12, std::string(600, 'x'));
    EXPECT_EQ(port.GetSystemErrorText(5), "Access is denied.(0x5)");
    EXPECT_EQ(port.GetSystemErrorText(0xAB12), std::string(512, 'x') + "(0xAB12)");
    EXPECT_EQ(port.GetSystemErrorText(99), "");
}

TEST_F(Serial, ForwardsTheRestAndItsErrors) {
    auto& control = bench.control;
    port.RThreshold(3);
    port.SThreshold(4);
    port.HandShaking(2);
    port.EOFEnable(true);
    port.NullDiscard(true);
    port.ParityReplace("#");
    port.InBufferSize(100);
    port.InputMode(0);
    port.InputLen(2);
    EXPECT_EQ(control.RThreshold() * 1000 + control.SThreshold() * 100 + control.HandShaking() * 10, 3420);
    EXPECT_TRUE(control.EOFEnable() && control.NullDiscard() && control.ParityReplace() == "#");
    EXPECT_EQ(control.InBufferSize(), 100);
    port.PortOpen(true);
    control.hold(false, true, false);
    EXPECT_TRUE(port.CTSHolding() && !port.CDHolding() && !port.DSRHolding());
    port.Break(true);
    EXPECT_TRUE(control.Break() && port.Break());
    control.addUnsent(9);
    EXPECT_EQ(port.OutBufferCount(), 9);
    port.OutBufferCount(0);
    EXPECT_EQ(port.OutBufferCount(), 0);
    port.CommOutput(std::string("abc"));
    peer.say(bench.runtime.ms() + 1, "xyz");
    bench.runtime.Sleep(10);
    EXPECT_EQ(peer.heardText(), "abc");
    EXPECT_EQ(port.InBufferCount(), 3);
    EXPECT_EQ(port.CommInput(), Variant(std::string("xy")));
    port.InBufferCount(0);
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_THROW(port.CTSHolding(true), PortError);
    port.PortOpen(false);
    EXPECT_THROW(port.CommOutput(std::string("x")), PortError);
    clsMSComm detached(bench.map);
    detached.Attach(nullptr, nullptr);
    EXPECT_THROW(detached.InBufferCount(), PortError);
}

}  // namespace corvane::tests
