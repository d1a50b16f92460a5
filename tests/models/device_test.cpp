#include "models/Device.h"

#include <gtest/gtest.h>

#include "Talk.h"

namespace corvane::models {
namespace {

constexpr const char* kVersionQuery = "010001005070";
constexpr const char* kSwitch = "01001f00f079";
constexpr const char* kAccepted = "010006006072";
constexpr const char* kRefused = "01001500507f";
constexpr const char* kErase = "02580d";
constexpr const char* kRestart = "02520d";

DeviceOptions plain() {
    DeviceOptions options;
    options.version = "V1";
    return options;
}

TEST(TarnPlusDevice, AnswersRequestsByteForByte) {
    const struct {
        const char* what;
        bool hasPassword;
        const char* request;
        const char* reply;
    } rows[] = {
        {"version with its NUL", false, kVersionQuery, "01000603563100df7d"},
        {"another address comes back", false, "010501005160", "010506035631008a7d"},
        {"no login needed", false, "01000000c071", "0100060400011000a6b6"},
        {"login needed", true, "01000000c071", "01000604ff011000b286"},
        {"password right", true, "01000305041c05006c2295", kAccepted},
        {"password wrong", true, "010003016b5bb0", kRefused},
        {"password not asked for", false, "010003016b5bb0", kRefused},
        {"switch before a login", true, kSwitch, "01001501e43b10"},
        {"switch", false, kSwitch, kAccepted},
        {"end of session", false, "010004000073", kAccepted},
        {"no such function", false, "01000700f073", "0100150101b0d1"},
        {"garbage ahead of the frame", false, "0dfe02010001005070", "01000603563100df7d"},
        {"a wrong CRC", false, "010001005071", ""},
        {"text commands of the older kind", false, "024430300d", ""},
    };
    for (const auto& row : rows) {
        auto options = plain();
        if (row.hasPassword) options.password = "quill";
        Device device(options);
        EXPECT_EQ(Talk{device}.ask(row.request), row.reply) << row.what;
    }
}

TEST(TarnPlusDevice, LoginLastsUntilTheEndOfTheSession) {
    auto options = plain();
    options.password = "quill";
    Device device(options);
    Talk talk{device};
    talk.ask("01000305041c05006c2295");
    talk.ask("010004000073");
    EXPECT_EQ(talk.ask(kSwitch), "01001501e43b10");
    talk.ask("01000305041c05006c2295");
    EXPECT_EQ(talk.ask(kSwitch), kAccepted);
    EXPECT_TRUE(device.isInBoot());
    EXPECT_EQ(device.log().requests.size(), 5U);
}

TEST(TarnPlusDevice, ForgetsAFrameThatDoesNotGoOn) {
    Device device(plain());
    Talk talk{device};
    talk.timeline("0100", 501);
    EXPECT_EQ(talk.ask(kVersionQuery), "01000603563100df7d");
    talk.timeline("010001", 499);
    EXPECT_EQ(talk.ask("005070"), "01000603563100df7d");
}

TEST(Device, ListensOnlyAtTheRateOfTheProgramThatRuns) {
    auto options = plain();
    options.bootBaud = 57600;
    options.wrongRate = WrongRate::garbage;
    Device device(options);
    Talk talk{device, 9600};
    EXPECT_EQ(talk.ask("0d"), "fe80e0");
    std::size_t garbage = 0;
    for (int i = 0; i < 50; ++i) garbage += talk.ask("0d").size() / 2;
    EXPECT_EQ(garbage, 45U) << "a little garbage ends";
    talk.rate = 19200;
    EXPECT_EQ(talk.ask(kSwitch), kAccepted);
    EXPECT_EQ(talk.ask("0d"), "fe80e0");
    talk.rate = 57600;
    EXPECT_EQ(talk.ask("0d"), "0d0a4156523e");
    EXPECT_EQ(device.log().heard.at(57600), fromHex("0d"));
    EXPECT_EQ(device.log().boot, fromHex("0d"));
    EXPECT_EQ(device.log().application, fromHex(kSwitch));
}

TEST(TarnDevice, AnswersLinesAndSwitches) {
    auto options = plain();
    options.kind = Kind::tarn;
    options.faults = Faults{"tarn@Dx1=no"};
    Device device(options);
    Talk talk{device};
    EXPECT_EQ(talk.ask(kVersionQuery), "");
    EXPECT_EQ(talk.ask("024430300d"), "024430303d310d");
    EXPECT_EQ(talk.ask("0246"), "");
    EXPECT_EQ(talk.ask("0d"), "024156310d");
    EXPECT_EQ(talk.ask("02440d"), "026e6f0d");
    EXPECT_EQ(talk.ask("02440d"), "");
    EXPECT_EQ(talk.ask(kErase), "02410d");
    EXPECT_EQ(talk.line(""), "0d0a4156523e");
    EXPECT_EQ(device.log().commands, (std::vector<std::string>{"D00", "F", "D", "D", "X"}));
}

TEST(BootLoader, ErasesProgramsAndStartsTheNewApplication) {
    auto options = plain();
    options.nextVersion = "V2";
    options.versionEndsInNul = false;
    Device device(options);
    Talk talk{device};
    talk.ask(kSwitch);
    EXPECT_NE(device.flash().contents().size(), 0U) << "the old application";
    EXPECT_EQ(talk.ask(kErase), "06");
    EXPECT_EQ(talk.line(":0100100033BC"), "06");
    EXPECT_EQ(talk.line(":0100100033BD"), "15");
    EXPECT_EQ(talk.line(":020000001122CB"), "06");
    EXPECT_EQ(talk.line(":00000001FF"), "06");
    EXPECT_EQ(talk.ask("02510d"), "15") << "no such command";
    EXPECT_EQ(talk.ask(kRestart), "");
    EXPECT_EQ(device.flash().contents(), (std::map<std::uint32_t, std::uint8_t>{{0, 0x11}, {1, 0x22}, {16, 0x33}}));
    EXPECT_EQ(talk.ask(kVersionQuery), "0100060256323d3b");
    EXPECT_EQ(device.log().refused, std::vector<std::string>{":0100100033BD"});
    EXPECT_EQ(device.log().records.size(), 4U);
}

TEST(BootLoader, RestartsIntoAnApplicationOnlyWhenThereIsOne) {
    const struct {
        const char* what;
        std::vector<const char*> heard;
        bool staysAfterRestart, staysAfterPowerLoss;
    } rows[] = {
        {"nothing done", {}, false, false},
        {"erased", {kErase}, true, true},
        {"half programmed", {kErase, "3a3031303031303030333342430d"}, false, true},
        {"end record in", {kErase, "3a3031303031303030333342430d", "3a303030303030303146460d"}, false, false},
    };
    for (const auto& row : rows) {
        for (const bool powerLoss : {false, true}) {
            auto options = plain();
            options.startsInBoot = true;
            Device device(options);
            Talk talk{device};
            for (const auto* bytes : row.heard) talk.ask(bytes);
            if (powerLoss) {
                device.unplug();
                EXPECT_EQ(talk.ask("0d"), "");
                device.plugIn(talk.now);
            } else {
                talk.ask(kRestart);
            }
            EXPECT_EQ(device.isInBoot(), powerLoss ? row.staysAfterPowerLoss : row.staysAfterRestart) << row.what;
        }
    }
}

TEST(BootLoader, OfABareDeviceStaysWhereItIs) {
    auto options = plain();
    options.kind = Kind::boot;
    options.prompt = "M51>";
    Device device(options);
    Talk talk{device};
    EXPECT_EQ(talk.line(""), "0d0a4d35313e");
    talk.ask(kRestart);
    EXPECT_EQ(talk.line(""), "0d0a4d35313e");
    EXPECT_EQ(device.log().restarts, 1);
}

TEST(Device, SilentAndBabblingOnesNeverAnswer) {
    auto options = plain();
    options.kind = Kind::silent;
    Device silent(options);
    EXPECT_EQ(Talk{silent}.timeline("0d", 5000), "");
    EXPECT_EQ(silent.log().heard.at(19200), fromHex("0d"));

    options.kind = Kind::babbling;
    Device everywhere(options);
    EXPECT_EQ(Talk{everywhere}.timeline("", 21),
              "10:7469636b207469636b207469636b207469636b 19:207469636b207469636b207469636b20746963");

    options.faults = Faults{"babble@9600"};
    Device at9600(options);
    Talk talk{at9600};
    EXPECT_EQ(talk.timeline("0d", 1000), "");
    talk.rate = 9600;
    EXPECT_EQ(talk.timeline("0d", 12), "10:7469636b207469636b");
    talk.rate = 19200;
    EXPECT_EQ(talk.timeline("0d", 1000), "");
}

}  // namespace
}  // namespace corvane::models
