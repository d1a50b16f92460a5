#include "hid/ControlBench.h"
#include "text/RuntimeError.h"

namespace corvane::tests {

struct Commands : ::testing::Test {
    Commands() { bench_.open(); }

    /// Sends command 9 with one parameter.
    bool send() { return control_.SendHIDCMD(9, {0xAA}, results_); }

    /// The bytes of the only command that was sent.
    std::string sent() {
        EXPECT_EQ(reader_.commands.size(), 1u);
        return std::exchange(reader_.commands, {}).at(0).second;
    }

    ControlBench bench_;
    VellIO& control_ = *bench_.control;
    ScriptedReader& reader_ = bench_.reader;
    Bytes results_{9, 9};
};

TEST_F(Commands, AreFramedWithCodeAndCountOrSentRaw) {
    reader_.reply({6, 2, 'h', 'i'});
    EXPECT_TRUE(control_.SendHIDCMD(8, Bytes(255, 0xEE), results_));
    EXPECT_EQ(results_, Bytes({'h', 'i'}));
    const auto longest = sent();
    EXPECT_EQ(longest.substr(0, 8) + std::to_string(longest.size()), "08 FF EE770");
    EXPECT_THROW(control_.SendHIDCMD(8, Bytes(256), results_), RuntimeError);
    EXPECT_FALSE(control_.IsBusy());
    reader_.reply({6, 1, 5});
    EXPECT_TRUE(control_.SendHIDRawCmd({0xC8, 1, 2, 3}, results_));
    EXPECT_EQ(sent(), "C8 01 02 03");
    EXPECT_EQ(results_, Bytes({5}));
}

TEST_F(Commands, RepliesDecideTheResult) {
    const std::tuple<bool, Bytes, bool, bool, bool, Bytes> table[] = {
        // raw, the reply: result, NAK, not supported, results
        {true, {21, 1, 4}, false, true, false, {4}},  // a raw command leaves "not supported" alone, both ways
        {false, {6, 0}, true, false, false, {}},      {false, {6, 1, 4}, true, false, false, {4}},
        {false, {21, 0}, false, true, false, {}},     {false, {21, 2, 4, 9}, false, true, true, {4, 9}},
        {true, {6, 0}, true, false, true, {}},        {false, {21, 1, 3}, false, true, false, {3}},
        {false, {7, 1, 4}, false, false, false, {4}},
    };
    for (const auto& [raw, reply, result, nak, notSupported, results] : table) {
        SCOPED_TRACE(testing::PrintToString(reply));
        reader_.reply(reply);
        EXPECT_EQ(raw ? control_.SendHIDRawCmd({1}, results_) : send(), result);
        EXPECT_EQ(control_.IsSendHIDCmdNAK(), nak);
        EXPECT_EQ(control_.IsCommandNotSupported(), notSupported);
        EXPECT_EQ(results_, results);
    }
}

TEST(CommandTimes, OfRepliesAndTheirPieces) {
    // whether the library says that data has come, which earns new time; the reply: result, results, ms
    const std::tuple<bool, ScriptedReader::Pieces, bool, Bytes, std::int64_t> table[] = {
        {true, {}, false, {}, 1000},
        {false, {{999, {6, 0}}}, true, {}, 999},
        {false, {{1000, {6, 0}}}, false, {}, 1000},
        {false, {{900, {6}}, {1049, {3}}, {1198, {1}}, {1347, {2, 3}}}, true, {1, 2, 3}, 1347},
        {true, {{900, {6}}, {1049, {2}}, {1198, {1, 2}}}, true, {1, 2}, 1198},
        {false, {{900, {6}}, {1050, {0}}}, false, {}, 1050},
        {false, {{0, {6, 4, 1, 2}}}, true, {}, 150},  // accepted stays so without its results
        {false, {{0, {21, 1}}}, false, {}, 150},
    };
    for (const auto& [served, reply, result, results, ms] : table) {
        SCOPED_TRACE(testing::PrintToString(reply));
        ControlBench bench(true, served ? Texts() : Texts{"vellService"});
        bench.open();
        bench.reader.reply(reply);
        Bytes found;
        const auto start = bench.runtime.ms();
        EXPECT_EQ(bench.control->SendHIDCMD(9, {}, found), result);
        EXPECT_EQ(found, results);
        EXPECT_EQ(bench.runtime.ms() - start, ms);
    }
}

TEST_F(Commands, NoticesExtendTheirTimeAndCancelEndsIt) {
    auto start = bench_.runtime.ms();
    bench_.runtime.at(start + 600, [this] { control_.VellIOProc(control_.CommID(), 4, 0); });
    EXPECT_FALSE(send());
    EXPECT_EQ(bench_.runtime.ms() - start, 1600);
    start = bench_.runtime.ms();
    bench_.runtime.at(start + 300, [this] { control_.CancelHIDCommand(); });
    EXPECT_FALSE(send());
    EXPECT_EQ(bench_.runtime.ms() - start, 300);
    reader_.reply({{50, {6, 0}}, {70, {21, 0}}});
    EXPECT_TRUE(send()) << "the next one is not cancelled";
    bench_.runtime.Sleep(50);
    EXPECT_FALSE(send());
    EXPECT_FALSE(control_.IsSendHIDCmdNAK()) << "what waited before is discarded";
}

TEST_F(Commands, AreRefusedWithoutSending) {
    bool asked = false;
    bench_.runtime.at(bench_.runtime.ms() + 5, [&] {  // in the middle of another one
        Bytes results{1};
        EXPECT_FALSE(control_.SendHIDCMD(1, {}, results) || control_.SendHIDRawCmd({1}, results));
        asked = control_.IsBusy() && results.empty();
    });
    reader_.reply({{10, {6, 0}}});
    EXPECT_TRUE(send() && asked && !control_.IsBusy());
    EXPECT_EQ(sent(), "09 01 AA");
    control_.KestrelCmdSetEnabled(false);
    EXPECT_FALSE(send());
    EXPECT_EQ(results_, Bytes());
    control_.KestrelCmdSetEnabled(true);
    const auto start = bench_.runtime.ms();
    EXPECT_FALSE(control_.SendHIDRawCmd({}, results_)) << "the library does not take it";
    vellClose(control_.CommID());
    EXPECT_FALSE(send());
    EXPECT_EQ(std::to_string(bench_.runtime.ms() - start) + bench_.sent(), "0");
}

TEST_F(Commands, OfTheReaderByteByByte) {
    Bytes buffer{1, 2, 3, 4, 5, 6, 7, 8};
    const std::pair<const char*, std::function<bool()>> table[] = {
        {"01 04 7F FE FD FC", [&] { return control_.SetHIDBaudrate(0x7FFEFDFC); }},
        {"02 03 41 1E 02", [&] { return control_.SetKestrelKeyCode('A', 0x1E, 2); }},
        {"03 01 05", [&] { return control_.SetKestrelIODirect(1, 0, 1); }},
        {"03 01 02", [&] { return control_.SetKestrelIODirect(4, -1, 2); }},
        {"09 03 80 02 02", [&] { return control_.KestrelGetRegister(384, buffer, 6, 4); }},
        {"09 03 80 02 08", [&] { return control_.KestrelGetRegister(640, buffer, 0, 8); }},
        {"09 03 7F 00 00", [&] { return control_.KestrelGetRegister(127, buffer, 8, 5); }},
        {"0A 06 FF 01 03 02 03 04", [&] { return control_.KestrelSetRegister(255, buffer, 1, 3); }},
        {"0A 05 00 80 02 07 08", [&] { return control_.KestrelSetRegister(-32768, buffer, 6, 8); }},
        {"0B 01 01", [&] { return control_.KestrelEraseFlash(3); }},
        {"CB 00", [&] { return control_.KestrelDiscardBuffer(); }},
    };
    for (const auto& [bytes, call] : table) {
        reader_.reply({6, 1, 0x55});
        EXPECT_TRUE(call()) << bytes;
        EXPECT_EQ(sent(), bytes);
        EXPECT_FALSE(call()) << "without an answer";
        EXPECT_EQ(sent(), bytes);
    }
    EXPECT_EQ(buffer, Bytes({1, 2, 3, 4, 5, 6, 7, 8})) << "a register that was read leaves the caller's bytes alone";
    EXPECT_THROW(control_.SetHIDBaudrate(-1), RuntimeError);
}

TEST_F(Commands, ForRegistersHaveTheirLimits) {
    Bytes eight(8), twenty(20), none;
    EXPECT_FALSE(control_.KestrelGetRegister(1, twenty, 0, 9) || control_.KestrelSetRegister(1, twenty, 0, 20));
    EXPECT_FALSE(control_.KestrelGetRegister(1, none, 0, 1) || control_.KestrelSetRegister(1, none, 0, 0));
    EXPECT_FALSE(control_.KestrelGetRegister(1, eight, 9, 1) || control_.KestrelSetRegister(1, eight, -1, 4));
    EXPECT_EQ(bench_.sent(), "");
    reader_.reply({6, 0});
    EXPECT_FALSE(control_.KestrelGetRegister(1, eight, 0, 4)) << "accepted, but nothing came back";
    reader_.reply({6, 0});
    EXPECT_TRUE(control_.KestrelSetRegister(1, eight, 0, 4));
}

TEST_F(Commands, ForVersionAndDirectionReadTheirAnswers) {
    for (const auto& [reply, version] :
         {std::pair(Bytes{6, 6, 'V', '1', 0xE9, 0, 'x', 0}, "V1\xE9"), std::pair(Bytes{6, 2, 'V', '2'}, "V2"),
          std::pair(Bytes{21, 2, 'N', 'O'}, "")}) {
        reader_.reply(reply);
        EXPECT_EQ(control_.GetHIDVersion(), version);
        EXPECT_EQ(sent(), "04 00");
    }
    std::int32_t serial = 9, ps2 = 9, extra = 9;
    reader_.reply({6, 0});
    EXPECT_FALSE(control_.GetKestrelDefaultIODirect(serial, ps2, extra));
    EXPECT_EQ(serial + ps2 + extra, 27);
    const std::pair<std::uint8_t, int> table[] = {// serial, PS/2, extra, keyboard
                                                  {0x00, 110},
                                                  {0x03, 1100},
                                                  {0x05, 1010},
                                                  {0x17, 1111},
                                                  {0x10, 111}};
    for (const auto& [answer, direction] : table) {
        reader_.reply({6, 1, answer});
        EXPECT_TRUE(control_.GetKestrelDefaultIODirect(serial, ps2, extra));
        EXPECT_EQ(serial * 1000 + ps2 * 100 + extra * 10 + control_.KestrelIsKeyboardExist(), direction);
    }
}

}  // namespace corvane::tests
