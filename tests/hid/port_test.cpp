#include "hid/FakeVell.h"
#include "ports/clsVellComm.h"
#include "text/RuntimeError.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

const Bytes kAck{6, 0};
const Bytes kNak{21, 0};

class Port : public ::testing::Test {
protected:
    void open() {
        control_.CommPort("HID1");
        control_.PortOpen(true);
    }

    Texts direction() {
        return {std::to_string(control_.KestrelDefaultSerialTo()) + std::to_string(control_.KestrelDefaultPS2To()) +
                std::to_string(control_.KestrelDefaultHIDExTo())};
    }

    ControlBench bench_;
    VellIO& control_ = *bench_.control;
    FakeVell& vell_ = bench_.vell;
};

TEST_F(Port, OpeningTellsTheReaderInThisOrder) {
    vell_.calls.clear();
    vell_.reply(kAck);
    vell_.reply(kAck);
    vell_.reply({6, 1, 0x17});
    control_.Settings("57600,N,8,1");
    open();
    EXPECT_EQ(vell_.calls, Texts({"open HID1", "break 0", "callback", "read size 2048", "write size 2048"}));
    EXPECT_EQ(vell_.commands, Texts({"150 CB 00", "150 01 04 00 00 E1 00", "150 05 00"}));
    EXPECT_EQ(direction(), Texts({"111"}));
    EXPECT_TRUE(control_.KestrelIsKeyboardExist());
    EXPECT_EQ(control_.openFailure(), "");
}

struct Opening {
    const char* what;
    std::vector<Bytes> replies;  // none: silence
    Texts commands;
    const char* direction;
};

TEST_F(Port, OpeningTriesThreeTimesAfterARefusalAndOnceAfterSilence) {
    const Bytes kDirection{6, 1, 1};
    const Opening table[] = {
        {"rate refused twice",
         {kAck, kNak, kAck, kNak, kAck, kAck, kDirection},
         {"150 CB 00", "150 01 04 00 00 4B 00", "200 CB 00", "200 01 04 00 00 4B 00", "250 CB 00",
          "250 01 04 00 00 4B 00", "250 05 00"},
         "100"},
        {"rate refused for good",
         {kAck, kNak, kAck, kNak, kAck, kNak},
         {"150 CB 00", "150 01 04 00 00 4B 00", "200 CB 00", "200 01 04 00 00 4B 00", "250 CB 00",
          "250 01 04 00 00 4B 00"},
         "011"},
        {"rate not answered", {kAck}, {"150 CB 00", "150 01 04 00 00 4B 00"}, "011"},
        {"discard refused", {kNak, kAck, kDirection}, {"150 CB 00", "150 01 04 00 00 4B 00", "150 05 00"}, "100"},
        {"direction refused twice",
         {kAck, kAck, kNak, kAck, kNak, kAck, kDirection},
         {"150 CB 00", "150 01 04 00 00 4B 00", "150 05 00", "200 CB 00", "200 05 00", "250 CB 00", "250 05 00"},
         "100"},
        {"direction refused for good",
         {kAck, kAck, kNak, kAck, kNak, kAck, kNak, kAck},
         {"150 CB 00", "150 01 04 00 00 4B 00", "150 05 00", "200 CB 00", "200 05 00", "250 CB 00", "250 05 00",
          "300 CB 00"},
         "011"},
        {"direction not answered", {kAck, kAck}, {"150 CB 00", "150 01 04 00 00 4B 00", "150 05 00"}, "011"},
    };
    for (const auto& row : table) {
        ControlBench bench;
        bench.vell.tellsControlData = false;
        for (const auto& reply : row.replies) bench.vell.reply(reply);
        bench.control->CommPort("HID1");
        bench.control->PortOpen(true);
        EXPECT_TRUE(bench.control->PortOpen());
        EXPECT_EQ(bench.vell.commands, row.commands) << row.what;
        EXPECT_EQ(std::to_string(bench.control->KestrelDefaultSerialTo()) +
                      std::to_string(bench.control->KestrelDefaultPS2To()) +
                      std::to_string(bench.control->KestrelDefaultHIDExTo()),
                  row.direction)
            << row.what;
    }
}

TEST_F(Port, AReaderWithoutCommandsIsSentNone) {
    const struct {
        std::int32_t productId;
        const char* product;
        bool silent;
    } table[] = {
        {21, "Kestrel", true},         {5, "Kestrel (HID1)", true},   {5, "Kestrel ( hid1 )", true},
        {5, "USB (2) x (hid1)", true}, {5, "Kestrel (HID12)", false}, {5, ")HID1(", false},
        {5, "Kestrel HID1)", false},   {5, "Kestrel (HID1", false},   {5, "", false},
    };
    for (const auto& row : table) {
        ControlBench bench;
        bench.vell.productId = row.productId;
        bench.vell.product = row.product;
        bench.control->CommPort("HID1");
        bench.control->PortOpen(true);
        EXPECT_EQ(bench.vell.commands.empty(), row.silent) << row.product;
        EXPECT_EQ(bench.control->KestrelCmdSetEnabled(), !row.silent);
        EXPECT_EQ(bench.control->KestrelDefaultPS2To(), 1);
        bench.vell.commands.clear();
        bench.control->PortOpen(false);
        EXPECT_EQ(bench.vell.commands.empty(), row.silent);
        bench.vell.productId = 5;
        bench.vell.product = "Kestrel";
        bench.control->PortOpen(true);
        EXPECT_TRUE(bench.control->KestrelCmdSetEnabled()) << "another reader is asked anew";
    }
}

TEST_F(Port, AFailedOpeningSaysWhy) {
    vell_.openWorks = false;
    open();
    EXPECT_FALSE(control_.PortOpen());
    EXPECT_EQ(control_.openFailure(), "no access");
    EXPECT_EQ(vell_.commands, Texts());
    EXPECT_EQ(bench_.runtime.ms(), 0);
}

TEST_F(Port, ClosingGivesTheDirectionBack) {
    const struct {
        std::uint8_t direction;
        std::vector<Bytes> replies;
        Texts commands;
        std::int64_t ms;
    } table[] = {
        {0x05, {kAck}, {"0 03 01 05"}, 50},
        {0x00, {kAck}, {"0 03 01 06"}, 50},
        {0x03, {kNak, kAck, kAck}, {"0 03 01 03", "50 CB 00", "50 03 01 03"}, 100},
        {0x03, {kNak, kAck, kNak}, {"0 03 01 03", "50 CB 00", "50 03 01 03"}, 100},
        {0x03, {}, {"0 03 01 03"}, 1050},
    };
    for (const auto& row : table) {
        ControlBench bench;
        bench.vell.tellsControlData = false;
        bench.open(row.direction);
        const auto start = bench.runtime.ms();
        for (const auto& reply : row.replies) bench.vell.reply(reply);
        bench.control->PortOpen(false);
        Texts commands;
        for (const auto& command : bench.vell.commands) {
            commands.push_back(std::to_string(std::stoi(command) - start) + command.substr(command.find(' ')));
        }
        EXPECT_EQ(commands, row.commands);
        EXPECT_EQ(bench.vell.calls, Texts({"close"}));
        EXPECT_EQ(bench.runtime.ms() - start, row.ms);
        bench.control->PortOpen(false);
        EXPECT_EQ(bench.vell.calls.size(), 1u);
    }
}

TEST_F(Port, ClosingAfterAFailedDirectionReadSends011) {
    vell_.reply(kAck);
    vell_.reply(kAck);
    open();
    vell_.commands.clear();
    control_.PortOpen(false);
    ASSERT_EQ(vell_.commands.size(), 1u);
    EXPECT_EQ(vell_.commands[0].substr(vell_.commands[0].find(' ')), " 03 01 06");
}

TEST_F(Port, SettingsAreARateWhileClosed) {
    EXPECT_EQ(control_.Settings(), "19200,N,8,1");
    const std::pair<const char*, const char*> table[] = {
        {"9600,N,8,1", "9600,N,8,1"},
        {"N,8,1", "0,N,8,1"},
        {"", "0,N,8,1"},
        {"57600N,8,1", "57600,N,8,1"},
        {"1.5,8,E,38400.9", "38400,N,8,1"},
        {"300,1200", "1200,N,8,1"},
        {"9600,0", "0,N,8,1"},
        {"4,5,6,7,8,1,2", "0,N,8,1"},
        {" 110 ", "110,N,8,1"},
    };
    for (const auto& [text, shown] : table) {
        control_.Settings(text);
        EXPECT_EQ(control_.Settings(), shown) << text;
    }
    EXPECT_THROW(control_.Settings("3000000000,N,8,1"), RuntimeError);
    EXPECT_EQ(vell_.commands, Texts());
}

TEST_F(Port, SettingsReachAnOpenReaderThatMustAccept) {
    bench_.open();
    vell_.reply(kAck);
    control_.Settings("57600N,8,1");
    EXPECT_EQ(control_.Settings(), "57600,N,8,1");
    vell_.tellsControlData = false;
    const auto start = bench_.runtime.ms();
    for (int i = 0; i < 3; ++i) vell_.reply(kNak);
    vell_.commands.clear();
    control_.Settings("9600,N,8,1");
    EXPECT_EQ(control_.Settings(), "57600,N,8,1");
    Texts expected;
    for (const int ms : {0, 50, 100}) expected.push_back(std::to_string(start + ms) + " 01 04 00 00 25 80");
    EXPECT_EQ(vell_.commands, expected);
    vell_.reply(kNak);
    vell_.reply(kAck);
    control_.Settings("9600,N,8,1");
    EXPECT_EQ(control_.Settings(), "9600,N,8,1");
}

TEST_F(Port, InputTakesWhatIsThere) {
    bench_.open();
    vell_.toRead = bytesOf(std::string("hello"));
    EXPECT_EQ(control_.InBufferCount(), 5);
    control_.InputLen(2);
    EXPECT_EQ(control_.CommInput(), Variant(bytesOf(std::string("he"))));
    control_.InputMode(0);
    EXPECT_EQ(control_.CommInput(), Variant(std::string("ll")));
    control_.InputLen(0);
    EXPECT_EQ(control_.CommInput(), Variant(std::string("o")));
    EXPECT_EQ(control_.CommInput(), Variant(std::string()));
    control_.InputMode(1);
    EXPECT_EQ(control_.CommInput(), Variant(Bytes()));
    vell_.toRead = bytesOf(std::string("x"));
    vell_.isOpen = false;
    EXPECT_EQ(control_.CommInput(), Variant(Bytes()));
    EXPECT_EQ(vell_.toRead.size(), 1u);
}

TEST_F(Port, OutputTakesBytesAndTexts) {
    control_.CommOutput(std::string("lost"));
    bench_.open();
    control_.CommOutput(Bytes{1, 0, 255});
    control_.CommOutput(std::string("\xE9"));
    control_.CommOutput(std::int32_t{5});
    control_.CommOutput(Bytes());
    EXPECT_EQ(vell_.written, Bytes({1, 0, 255, 0xE9}));
}

TEST_F(Port, PropertiesOfASerialPortHaveTheirMeaningHere) {
    auto& c = control_;
    c.InBufferSize(100);
    c.OutBufferSize(200);
    vell_.readSize = vell_.writeSize = 1;
    bench_.open();
    EXPECT_EQ(c.InBufferSize(), 100) << "handed over at every opening";
    EXPECT_EQ(c.OutBufferSize(), 200);
    c.InBufferCount(7);
    c.OutBufferCount(0);
    c.Break(true);
    EXPECT_EQ(vell_.calls, Texts({"discard read", "discard write", "break -1"}));
    EXPECT_TRUE(c.Break() && c.CTSHolding());
    EXPECT_EQ(c.InputLen() + c.RThreshold() + c.SThreshold(), 0);
    EXPECT_EQ(c.InputMode(), 1);
    c.DTREnable(true);
    c.EOFEnable(true);
    c.NullDiscard(true);
    c.HandShaking(2);
    c.ParityReplace("?");
    EXPECT_FALSE(c.DTREnable() || c.EOFEnable() || c.NullDiscard() || c.CDHolding() || c.DSRHolding() || c.RTSEnable());
    EXPECT_EQ(c.HandShaking(), 0);
    EXPECT_EQ(c.ParityReplace(), "");
    c.RTSEnable(true);
    c.RThreshold(3);
    c.SThreshold(4);
    EXPECT_TRUE(c.RTSEnable());
    EXPECT_EQ(c.RThreshold() * 10 + c.SThreshold(), 34);
}

TEST_F(Port, TheAdapterHandsEverythingOnAndRaisesOneEventEach) {
    clsVellComm port;
    EXPECT_THROW(port.PortOpen(), RuntimeError);
    clsMSCommEvent event;
    int events = 0;
    event.OnComm = [&] { ++events; };
    port.Attach(&control_, &event);
    EXPECT_EQ(port.Settings(), "19200,N,8,1");
    EXPECT_EQ(port.NumberOfCommPorts(), 1);
    EXPECT_EQ(port.EnumCommPort(0) + "/" + port.EnumCommPortEx(0), "HID1/HID1 Kestrel");
    EXPECT_TRUE(port.IsMyCommPort("HID1"));
    port.CommPort("HID1");
    EXPECT_EQ(control_.CommPort(), "HID1");
    port.PortOpen(true);
    EXPECT_TRUE(port.PortOpen());
    EXPECT_EQ(port.CommID(), 77);
    vell_.toRead = bytesOf(std::string("abc"));
    EXPECT_EQ(port.InBufferCount(), 3);
    EXPECT_EQ(port.CommInput(), Variant(bytesOf(std::string("abc"))));
    port.CommOutput(std::string("x"));
    EXPECT_EQ(vell_.written, bytesOf(std::string("x")));
    port.RTSEnable(true);
    EXPECT_TRUE(control_.RTSEnable());
    vell_.raise(0);
    vell_.raise(35);
    EXPECT_EQ(events, 2);
    EXPECT_EQ(port.CommEvent(), 3);
    port.Attach(nullptr, nullptr);
    vell_.raise(0);
    EXPECT_EQ(events, 2);
}

}  // namespace
}  // namespace corvane
