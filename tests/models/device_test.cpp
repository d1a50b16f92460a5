#include "models/Device.h"

#include <gtest/gtest.h>

#include "Talk.h"

namespace corvane::models {
namespace {

constexpr const char* kVersionQuery = "010001005070";
constexpr const char* kErase = "02580d";
constexpr const char* kRecord = "3a3031303031303030333342430d";  // :0100100033BC

DeviceOptions plain() {
    DeviceOptions options;
    options.version = "V1";
    return options;
}

TEST(TarnPlusDevice, ForgetsAFrameThatDoesNotGoOn) {
    Device device(plain());
    Talk talk{device};
    talk.timeline("0100", 501);
    EXPECT_EQ(talk.ask("010501005160"), "010506035631008a7d") << "its own address, and the version with its NUL";
    talk.timeline("010001", 499);
    EXPECT_EQ(talk.ask("005070"), "01000603563100df7d");
}

TEST(BootLoader, RestartsIntoAnApplicationOnlyWhenThereIsOne) {
    const struct {
        std::vector<const char*> heard;
        bool staysAfterRestart, staysAfterPowerLoss;
    } rows[] = {{{}, false, false},
                {{kErase}, true, true},
                {{kErase, kRecord}, false, true},
                {{kErase, kRecord, "3a303030303030303146460d"}, false, false}};
    for (const auto& row : rows) {
        for (const bool powerLoss : {false, true}) {
            auto options = plain();
            options.startsInBoot = true;
            Device device(options);
            Talk talk{device};
            for (const auto* bytes : row.heard) talk.ask(bytes);
            if (powerLoss) device.unplug();
            EXPECT_EQ(talk.ask("02520d"), "");  // the request for a restart
            if (powerLoss) device.plugIn(talk.now);
            EXPECT_EQ(device.isInBoot(), powerLoss ? row.staysAfterPowerLoss : row.staysAfterRestart)
                << row.heard.size();
        }
    }
}

TEST(Faults, OfReplies) {
    const struct {
        const char *fault, *first, *second;  // what two version queries, a second apart, are answered
    } rows[] = {
        {"crc@01x2", "0:0100060256313c3b", "0:0100060256313c3b"},
        {"crc@02", "0:0100060256313c7b", "0:0100060256313c7b"},
        {"corrupt@1=2", "0:0100460256313c7b", "0:0100060256313c7b"},
        {"dropx*", "", ""},
        {"repeat@2", "0:0100060256313c7b", "0:0100060256313c7b0100060256313c7b"},
        {"delay@1=1300", "", "300:0100060256313c7b0100060256313c7b"},
        {"pieces=3/50", "0:010006 50:025631 100:3c7b", "0:010006 50:025631 100:3c7b"},
        {"noise=feff", "0:feff0100060256313c7b", "0:feff0100060256313c7b"},
        {"refuse@1=07", "0:0100150107b251", "0:0100150107b251"},
        {"deaf@1x1", "", "0:0100060256313c7b"},
        {"corrupt-byte@12", "0:0100060256313c7b", ""},
    };
    for (const auto& row : rows) {
        auto options = plain();
        options.versionEndsInNul = false;
        options.faults = {row.fault};
        Device device(options);
        Talk talk{device};
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), row.first) << row.fault;
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), row.second) << row.fault;
    }
}

TEST(Faults, KeepARecordsNumberInEveryTry) {
    auto options = plain();
    options.startsInBoot = true;
    options.faults = {"nak@2x4", "mute@3"};
    Device device(options);
    Talk talk{device};
    const auto round = [&] {
        std::string said;
        for (const char* line : {":0100000044BB", ":0100100033BC", ":0100100033BC", ":00000001FF"})
            said += talk.line(line);
        return said;
    };
    EXPECT_EQ(round() + " " + round() + " " + round(), "061515 06151506 06060606");
    talk.ask(kErase);
    talk.line(":00000001FF");
    device.faults().add("nak@1");
    EXPECT_EQ(talk.line(":00000001FF"), "15") << "an erase begins the count anew";
}

}  // namespace
}  // namespace corvane::models
