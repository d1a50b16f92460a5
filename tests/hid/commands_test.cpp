#include "hid/FakeVell.h"
#include "text/RuntimeError.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

class Commands : public ::testing::Test {
protected:
    Commands() { bench_.open(); }

    /// Sends command 9 with one parameter; the ms that it took, in took_.
    bool send() {
        const auto start = bench_.runtime.ms();
        const bool result = control_.SendHIDCMD(9, {0xAA}, results_);
        took_ = bench_.runtime.ms() - start;
        return result;
    }

    /// The bytes of the only command that was sent, without its time.
    std::string sent() {
        EXPECT_EQ(vell_.commands.size(), 1u);
        const std::string text = vell_.commands.empty() ? "" : vell_.commands.back();
        vell_.commands.clear();
        return text.substr(std::min(text.size(), text.find(' ') + 1));
    }

    ControlBench bench_;
    VellIO& control_ = *bench_.control;
    FakeVell& vell_ = bench_.vell;
    Bytes results_{9, 9};
    std::int64_t took_ = 0;
};

TEST_F(Commands, AreFramedWithCodeAndCount) {
    vell_.reply({6, 0});
    EXPECT_TRUE(control_.SendHIDCMD(7, {}, results_));
    EXPECT_EQ(sent(), "07 00");
    EXPECT_EQ(results_, Bytes());
    vell_.reply({6, 2, 'h', 'i'});
    EXPECT_TRUE(control_.SendHIDCMD(8, Bytes(255, 0xEE), results_));
    EXPECT_EQ(sent().size(), 257u * 3 - 1);
    EXPECT_EQ(results_, Bytes({'h', 'i'}));
    EXPECT_THROW(control_.SendHIDCMD(8, Bytes(256), results_), RuntimeError);
    EXPECT_FALSE(control_.IsBusy());
    vell_.reply({6, 0});
    EXPECT_TRUE(send());
}

TEST_F(Commands, RawBytesGoAsTheyAre) {
    vell_.reply({6, 1, 5});
    EXPECT_TRUE(control_.SendHIDRawCmd({0xC8, 1, 2, 3}, results_));
    EXPECT_EQ(sent(), "C8 01 02 03");
    EXPECT_EQ(results_, Bytes({5}));
}

TEST_F(Commands, RepliesDecideTheResult) {
    const struct {
        Bytes reply;
        bool result, nak, notSupported;
        Bytes results;
    } table[] = {
        {{6, 0}, true, false, false, {}},      {{6, 1, 4}, true, false, false, {4}},
        {{21, 0}, false, true, false, {}},     {{21, 1, 4}, false, true, true, {4}},
        {{21, 1, 3}, false, true, false, {3}}, {{21, 2, 4, 9}, false, true, true, {4, 9}},
        {{7, 0}, false, false, false, {}},     {{7, 1, 4}, false, false, false, {4}},
    };
    for (const auto& row : table) {
        vell_.reply({row.reply});
        EXPECT_EQ(send(), row.result);
        EXPECT_EQ(control_.IsSendHIDCmdNAK(), row.nak);
        EXPECT_EQ(control_.IsCommandNotSupported(), row.notSupported);
        EXPECT_EQ(results_, row.results);
    }
}

TEST_F(Commands, ARawCommandLeavesNotSupportedAlone) {
    vell_.reply({21, 1, 4});
    control_.SendHIDRawCmd({1}, results_);
    EXPECT_FALSE(control_.IsCommandNotSupported());
    EXPECT_TRUE(control_.IsSendHIDCmdNAK());
    vell_.reply({21, 1, 4});
    send();
    vell_.reply({6, 0});
    EXPECT_TRUE(control_.SendHIDRawCmd({1}, results_));
    EXPECT_TRUE(control_.IsCommandNotSupported());
    EXPECT_FALSE(control_.IsSendHIDCmdNAK());
}

TEST_F(Commands, SilenceEndsAfterASecond) {
    EXPECT_FALSE(send());
    EXPECT_EQ(took_, 1000);
    vell_.tellsControlData = false;
    vell_.reply({{999, {6, 0}}});
    EXPECT_TRUE(send());
    vell_.reply({{1000, {6, 0}}});
    EXPECT_FALSE(send());
    EXPECT_FALSE(control_.IsSendHIDCmdNAK());
}

TEST_F(Commands, PiecesMayBe150MsApart) {
    for (const bool tells : {false, true}) {  // the library says that data has come, or does not
        vell_.tellsControlData = tells;
        vell_.reply({{900, {6}}, {1049, {3}}, {1198, {1}}, {1347, {2, 3}}});
        EXPECT_TRUE(send());
        EXPECT_EQ(results_, Bytes({1, 2, 3}));
    }
    vell_.tellsControlData = false;
    vell_.reply({{900, {6}}, {1050, {0}}});
    EXPECT_FALSE(send());
    EXPECT_EQ(took_, 1050);
}

TEST_F(Commands, AnAcceptedCommandStaysSoWithoutItsResults) {
    vell_.reply({{0, {6, 4, 1, 2}}});
    EXPECT_TRUE(send());
    EXPECT_LE(took_, 155);
    EXPECT_EQ(results_, Bytes());
    vell_.reply({{0, {21, 1}}});
    EXPECT_FALSE(send());
    EXPECT_TRUE(control_.IsSendHIDCmdNAK());
}

TEST_F(Commands, DataNoticesExtendTheLimit) {
    bench_.runtime.at(bench_.runtime.ms() + 600, [this] { vell_.raise(4); });
    EXPECT_FALSE(send());
    EXPECT_EQ(took_, 1600);
}

TEST_F(Commands, WhatWaitedBeforeIsDiscarded) {
    vell_.reply({{0, {6, 0}}, {20, {21, 0}}});
    EXPECT_TRUE(send());
    bench_.runtime.Sleep(50);
    EXPECT_FALSE(send());
    EXPECT_FALSE(control_.IsSendHIDCmdNAK());
}

TEST_F(Commands, CancelEndsTheRunningOne) {
    bench_.runtime.at(bench_.runtime.ms() + 300, [this] { control_.CancelHIDCommand(); });
    EXPECT_FALSE(send());
    EXPECT_EQ(took_, 300);
    vell_.reply({{50, {6, 0}}});
    EXPECT_TRUE(send()) << "the next one is not cancelled";
}

TEST_F(Commands, DoNotNest) {
    bool busyOutside = true, inner = true;
    bench_.runtime.at(bench_.runtime.ms() + 5, [&] {
        busyOutside = control_.IsBusy();
        Bytes results{1};
        inner = control_.SendHIDCMD(1, {}, results) || control_.SendHIDRawCmd({1}, results);
        EXPECT_EQ(results, Bytes());
        EXPECT_TRUE(control_.IsBusy());
    });
    vell_.reply({{10, {6, 0}}});
    EXPECT_TRUE(send());
    EXPECT_TRUE(busyOutside);
    EXPECT_FALSE(inner);
    EXPECT_FALSE(control_.IsBusy());
    EXPECT_EQ(vell_.commands.size(), 1u);
}

TEST_F(Commands, AreRefusedWithoutSending) {
    control_.KestrelCmdSetEnabled(false);
    EXPECT_FALSE(send());
    control_.KestrelCmdSetEnabled(true);
    vell_.ctrlWorks = false;
    EXPECT_FALSE(send());
    EXPECT_EQ(took_, 0);
    vell_.isOpen = false;
    EXPECT_FALSE(send());
    EXPECT_EQ(results_, Bytes());
    EXPECT_EQ(vell_.commands, Texts());
}

TEST_F(Commands, OfTheReaderByteByByte) {
    Bytes buffer{1, 2, 3, 4, 5, 6, 7, 8};
    const struct {
        const char* bytes;
        std::function<bool()> call;
    } table[] = {
        {"01 04 00 01 C2 00", [&] { return control_.SetHIDBaudrate(115200); }},
        {"01 04 7F FF FF FF", [&] { return control_.SetHIDBaudrate(2147483647); }},
        {"02 03 41 1E 02", [&] { return control_.SetKestrelKeyCode('A', 0x1E, 2); }},
        {"03 01 05", [&] { return control_.SetKestrelIODirect(1, 0, 1); }},
        {"03 01 02", [&] { return control_.SetKestrelIODirect(4, -1, 2); }},
        {"09 03 80 02 02", [&] { return control_.KestrelGetRegister(384, buffer, 6, 4); }},
        {"09 03 80 02 08", [&] { return control_.KestrelGetRegister(640, buffer, 0, 8); }},
        {"09 03 7F 00 00", [&] { return control_.KestrelGetRegister(127, buffer, 8, 5); }},
        {"0A 06 FF 01 03 02 03 04", [&] { return control_.KestrelSetRegister(255, buffer, 1, 3); }},
        {"0A 05 00 80 02 07 08", [&] { return control_.KestrelSetRegister(-32768, buffer, 6, 8); }},
        {"0B 01 01", [&] { return control_.KestrelEraseFlash(3); }},
        {"0B 01 00", [&] { return control_.KestrelEraseFlash(2); }},
        {"CB 00", [&] { return control_.KestrelDiscardBuffer(); }},
    };
    for (const auto& row : table) {
        vell_.reply({6, 1, 0x55});
        EXPECT_TRUE(row.call()) << row.bytes;
        EXPECT_EQ(sent(), row.bytes);
        EXPECT_FALSE(row.call()) << "without an answer";
        EXPECT_EQ(sent(), row.bytes);
    }
    EXPECT_EQ(buffer, Bytes({1, 2, 3, 4, 5, 6, 7, 8})) << "a register that was read leaves the caller's bytes alone";
}

TEST_F(Commands, ForRegistersHaveTheirLimits) {
    Bytes eight(8), twenty(20), none;
    EXPECT_FALSE(control_.KestrelGetRegister(1, twenty, 0, 9));
    EXPECT_FALSE(control_.KestrelSetRegister(1, twenty, 0, 20));
    EXPECT_FALSE(control_.KestrelGetRegister(1, none, 0, 1));
    EXPECT_FALSE(control_.KestrelSetRegister(1, none, 0, 0));
    EXPECT_FALSE(control_.KestrelGetRegister(1, eight, 9, 1));
    EXPECT_FALSE(control_.KestrelSetRegister(1, eight, -1, 4));
    EXPECT_EQ(vell_.commands, Texts());
    vell_.reply({6, 0});
    EXPECT_FALSE(control_.KestrelGetRegister(1, eight, 0, 4)) << "accepted, but nothing came back";
    vell_.reply({6, 0});
    EXPECT_TRUE(control_.KestrelSetRegister(1, eight, 0, 4));
}

TEST_F(Commands, ANegativeRateOverflows) { EXPECT_THROW(control_.SetHIDBaudrate(-1), RuntimeError); }

TEST_F(Commands, VersionEndsAtItsFirstZero) {
    vell_.reply({6, 6, 'V', '1', 0xE9, 0, 'x', 0});
    EXPECT_EQ(control_.GetHIDVersion(), "V1\xE9");
    EXPECT_EQ(sent(), "04 00");
    vell_.reply({6, 2, 'V', '2'});
    EXPECT_EQ(control_.GetHIDVersion(), "V2");
    vell_.reply({21, 2, 'N', 'O'});
    EXPECT_EQ(control_.GetHIDVersion(), "");
}

TEST_F(Commands, DirectionIsTakenFromItsBits) {
    const struct {
        std::uint8_t answer;
        int serial, ps2, extra;
        bool keyboard;
    } table[] = {
        {0x00, 0, 1, 1, false}, {0x01, 1, 0, 0, false}, {0x03, 1, 1, 0, false}, {0x05, 1, 0, 1, false},
        {0x17, 1, 1, 1, true},  {0x10, 0, 1, 1, true},  {0x06, 0, 1, 1, false},
    };
    for (const auto& row : table) {
        std::int32_t serial = 9, ps2 = 9, extra = 9;
        vell_.reply({6, 1, row.answer});
        EXPECT_TRUE(control_.GetKestrelDefaultIODirect(serial, ps2, extra));
        EXPECT_EQ((Bytes{std::uint8_t(serial), std::uint8_t(ps2), std::uint8_t(extra)}),
                  (Bytes{std::uint8_t(row.serial), std::uint8_t(row.ps2), std::uint8_t(row.extra)}))
            << int(row.answer);
        EXPECT_EQ(control_.KestrelIsKeyboardExist(), row.keyboard);
    }
    std::int32_t untouched = 9;
    vell_.reply({6, 0});
    EXPECT_FALSE(control_.GetKestrelDefaultIODirect(untouched, untouched, untouched));
    EXPECT_EQ(untouched, 9);
}

}  // namespace
}  // namespace corvane
