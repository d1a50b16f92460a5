#include "hid/ControlBench.h"
#include "ports/clsVellComm.h"
#include "text/RuntimeError.h"

namespace corvane::tests {

const Texts kUnserved{"vellService"};  // so that replies earn no new time

struct Port : ::testing::Test {
    ControlBench bench_;
    VellIO& control_ = *bench_.control;
    ScriptedReader& reader_ = bench_.reader;
};

TEST(HidPort, OpeningTriesThreeTimesAfterARefusalAndOnceAfterSilence) {
    // the replies, then silence; the commands to discard, set the rate, read the direction: when, and their first bytes
    const std::tuple<const char*, const char*, const char*> table[] = {
        {"ANANAA1", "150 CB, 150 01, 200 CB, 200 01, 250 CB, 250 01, 250 05", "100"},
        {"ANANAN", "150 CB, 150 01, 200 CB, 200 01, 250 CB, 250 01", "011"},
        {"A", "150 CB, 150 01", "011"},
        {"NA7", "150 CB, 150 01, 150 05", "111"},
        {"AANANA1", "150 CB, 150 01, 150 05, 200 CB, 200 05, 250 CB, 250 05", "100"},
        {"AANANANA", "150 CB, 150 01, 150 05, 200 CB, 200 05, 250 CB, 250 05, 300 CB", "011"},
        {"AA", "150 CB, 150 01, 150 05", "011"},
    };
    for (const auto& [replies, commands, direction] : table) {
        SCOPED_TRACE(replies);
        ControlBench bench(true, kUnserved);
        bench.openWith(replies);
        EXPECT_TRUE(bench.control->PortOpen());
        EXPECT_EQ(bench.direction(), direction);
        for (auto& command : bench.reader.commands) command.second.resize(2);
        EXPECT_EQ(bench.sent(), commands);
    }
}

TEST_F(Port, OpeningTellsTheReaderAndTheLibraryAllTheyNeed) {
    int events = 0;
    control_.OnVellProc = [&](std::int32_t, std::int32_t) { ++events; };
    control_.Settings("57600,N,8,1");
    control_.Break(true);
    vellSetCallBackProc(control_.CommID(), nullptr, 0);
    bench_.openWith("AA1");
    EXPECT_EQ(bench_.sent(), "0 break 00, 150 CB 00, 150 01 04 00 00 E1 00, 150 05 00");
    EXPECT_GT(events, 0) << "the library has its callback again";
    EXPECT_EQ(control_.InBufferSize() + control_.OutBufferSize(), 4096);
    EXPECT_EQ(control_.openFailure(), "");
    control_.PortOpen(false);
    bench_.sent();
    const auto start = bench_.runtime.ms();
    bench_.bus.forbid("/dev/hidraw1");
    bench_.openWith("");
    EXPECT_FALSE(control_.PortOpen());
    EXPECT_EQ(control_.openFailure(), "/dev/hidraw1: Permission denied");
    EXPECT_EQ(bench_.sent(), "");
    EXPECT_EQ(bench_.runtime.ms(), start);
}

TEST(HidPort, AReaderWithoutCommandsIsSentNone) {
    const std::tuple<std::uint16_t, const char*, bool> table[] = {
        {21, "Kestrel", true}, {5, "USB (2) x ( hid1 )", true}, {5, "Kestrel (HID12)", false},
        {5, ")HID1(", false},  {5, "Kestrel HID1)", false},     {5, "Kestrel (HID1", false},
    };
    for (const auto& [productId, product, silent] : table) {
        SCOPED_TRACE(product);
        ControlBench bench(false);
        bench.plug(product, productId);
        bench.start(true, {{"DefaultProductID", -1}});
        bench.openWith("");
        EXPECT_EQ(bench.sent().empty(), silent);
        EXPECT_EQ(bench.control->KestrelCmdSetEnabled(), !silent);
        bench.control->PortOpen(false);
        EXPECT_EQ(bench.sent().empty(), silent);
        bench.bus.unplug("/dev/hidraw1");
        bench.plug("Kestrel", 5);
        bench.openWith("");
        EXPECT_TRUE(bench.control->KestrelCmdSetEnabled()) << "another reader is asked anew";
    }
}

/// The exchange at hand goes on to its end, no other one follows, and a direction that was never read stays.
TEST(HidPort, ACancelEndsOpeningAndClosingAfterTheExchangeAtHand) {
    // ms after opening began, the reply and how often: the commands of opening, settings and closing, ms in all
    const std::tuple<int, ScriptedReader::Pieces, int, std::string, std::int64_t> table[] = {
        {152, {{5, {6, 0}}}, 3, "150 CB 00", 205},
        {157, {{5, {6, 0}}}, 3, "150 CB 00, 155 01 04 00 00 4B 00", 210},
        {163, {{5, {6, 1, 5}}}, 3, "150 CB 00, 155 01 04 00 00 4B 00, 160 05 00, 165 03 01 05", 1215},
        {500, {}, 0, "150 CB 00", 1200},
        {1500, {}, 0, "150 CB 00, 1150 01 04 00 00 4B 00", 2200},
    };
    for (const auto& [cancelAt, reply, times, commands, ms] : table) {
        SCOPED_TRACE(cancelAt);
        ControlBench bench(true, kUnserved);
        for (int i = 0; i < times; ++i) bench.reader.reply(reply);
        bench.control->CommPort("HID1");
        bench.runtime.at(cancelAt, [&] { bench.cancel.request(); });
        bench.control->PortOpen(true);
        bench.control->Settings("57600");
        bench.cancel.end();  // as a run does before it closes
        bench.control->PortOpen(false);
        EXPECT_EQ(bench.sent(), commands);
        EXPECT_EQ(bench.runtime.ms(), ms);
    }
}

TEST(HidPort, ClosingGivesTheDirectionBack) {
    const std::tuple<const char*, const char*, const char*, std::int64_t> table[] = {
        {"AA5", "A", "0 03 01 05", 50},
        {"AA0", "A", "0 03 01 06", 50},
        {"AA", "A", "0 03 01 06", 50},  // the direction could not be read
        {"AA3", "NAA", "0 03 01 03, 50 CB 00, 50 03 01 03", 100},
        {"AA3", "", "0 03 01 03", 1050},
    };
    for (const auto& [opening, closing, commands, ms] : table) {
        ControlBench bench(true, kUnserved);
        bench.openWith(opening);
        bench.sent();
        const auto start = bench.runtime.ms();
        bench.reader.reply(closing);
        bench.control->PortOpen(false);
        bench.control->PortOpen(false);
        EXPECT_EQ(bench.bus.openDevices(), 0);
        EXPECT_EQ(bench.sent(start), commands);
        EXPECT_EQ(bench.runtime.ms() - start, ms);
    }
}

TEST_F(Port, SettingsAreARateThatAnOpenReaderMustAccept) {
    EXPECT_EQ(control_.Settings(), "19200,N,8,1");
    const std::pair<const char*, const char*> table[] = {
        {"N,8,1", "0,N,8,1"},       {"57600N,8,1", "57600,N,8,1"}, {"1.5,8,E,38400.9", "38400,N,8,1"},
        {"300,1200", "1200,N,8,1"}, {"9600,0", "0,N,8,1"},         {"4,5,6,7,8,1,2", "0,N,8,1"},
    };
    for (const auto& [text, shown] : table) {
        control_.Settings(text);
        EXPECT_EQ(control_.Settings(), shown) << text;
    }
    EXPECT_THROW(control_.Settings("3000000000,N,8,1"), RuntimeError);
    EXPECT_EQ(bench_.sent(), "");
    bench_.open();
    reader_.reply("ANNNNNA");
    control_.Settings("57600N,8,1");
    bench_.sent();
    const auto start = bench_.runtime.ms();
    control_.Settings("9600,N,8,1");
    EXPECT_EQ(control_.Settings(), "57600,N,8,1");
    EXPECT_EQ(bench_.sent(start), "0 01 04 00 00 25 80, 50 01 04 00 00 25 80, 100 01 04 00 00 25 80");
    control_.Settings("9600,N,8,1");
    EXPECT_EQ(control_.Settings(), "9600,N,8,1");
}

TEST_F(Port, InputAndOutputTakeBytesAndTexts) {
    control_.CommOutput(std::string("lost"));
    bench_.open();
    control_.CommOutput(Bytes{1, 0, 255});
    control_.CommOutput(std::string("\xE9"));
    control_.CommOutput(std::int32_t{5});
    control_.CommOutput(Bytes());
    EXPECT_EQ(reader_.written, Bytes({1, 0, 255, 0xE9}));

    reader_.say(HidReportId::data, bytesOf(std::string("hello")));
    EXPECT_EQ(control_.InBufferCount(), 5);
    const std::tuple<std::int32_t, std::int32_t, Variant> table[] = {
        {2, 1, Bytes{'h', 'e'}}, {2, 0, std::string("ll")}, {0, 0, std::string("o")}, {0, 1, Bytes()}};
    for (const auto& [length, mode, input] : table) {
        control_.InputLen(length);
        control_.InputMode(mode);
        EXPECT_EQ(control_.CommInput(), input);
    }
    vellClose(control_.CommID());
    EXPECT_EQ(control_.CommInput(), Variant(Bytes()));
}

/// The dialogue with devices is tested through the adapter.
TEST_F(Port, PropertiesAndEventsOfASerialPortHaveTheirMeaningHere) {
    clsVellComm c;
    EXPECT_THROW(c.PortOpen(), RuntimeError);
    clsMSCommEvent event;
    std::vector<std::int32_t> events;
    event.OnComm = [&] { events.push_back(c.CommEvent()); };
    c.Attach(&control_, &event);
    EXPECT_EQ(c.EnumCommPort(0) + "/" + c.EnumCommPortEx(0), "HID1/HID1 Kestrel");
    EXPECT_TRUE(c.IsMyCommPort("HID1"));
    c.InBufferSize(100);
    c.OutBufferSize(200);
    vellSetReadBufferSize(c.CommID(), 1);
    vellSetWriteBufferSize(c.CommID(), 1);
    bench_.open();
    EXPECT_EQ(c.InBufferSize() * 1000 + c.OutBufferSize(), 100200) << "handed over at every opening";
    reader_.say(HidReportId::data, {1, 2});
    c.InBufferCount(7);
    EXPECT_EQ(c.InBufferCount(), 0);
    c.Break(true);
    EXPECT_TRUE(c.Break() && !c.CTSHolding());
    reader_.say(HidReportId::line, {1});
    EXPECT_TRUE(c.CTSHolding());
    c.DTREnable(true);
    c.EOFEnable(true);
    c.NullDiscard(true);
    c.HandShaking(2);
    c.ParityReplace("?");
    EXPECT_FALSE(c.DTREnable() || c.EOFEnable() || c.NullDiscard() || c.CDHolding() || c.DSRHolding());
    EXPECT_EQ(std::to_string(c.HandShaking()) + c.ParityReplace(), "0");
    c.RTSEnable(true);
    c.RThreshold(3);
    c.SThreshold(4);
    c.InputLen(1);
    c.InputMode(0);
    control_.ScanTiming(70);
    control_.AsyncIO(false);
    EXPECT_TRUE(control_.RTSEnable() && !control_.AsyncIO());
    EXPECT_EQ(c.RThreshold() * 10 + c.SThreshold() + control_.ScanTiming() * 100, 7034);
    EXPECT_EQ(control_.InputLen() * 10 + control_.InputMode(), 10);
    events.clear();
    for (const std::int32_t code : {0, 35}) control_.VellIOProc(control_.CommID(), code, 0);
    c.Attach(nullptr, nullptr);
    control_.VellIOProc(control_.CommID(), 0, 0);
    EXPECT_EQ(events, (std::vector<std::int32_t>{2, 3}));
}

}  // namespace corvane::tests
