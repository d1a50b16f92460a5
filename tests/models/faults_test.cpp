#include "models/Faults.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "Talk.h"

namespace corvane::models {
namespace {

TEST(Faults, SayWhatIsWrongWithTheirText) {
    const struct {
        const char* text;
        const char* complaint;
    } rows[] = {
        {"", "fault \"\": there is no fault \"\""},
        {"nack@5", "fault \"nack@5\": there is no fault \"nack\""},
        {"nak@five", "fault \"nak@five\": the place \"five\" is no number"},
        {"nak@0", "fault \"nak@0\": a place counts from 1"},
        {"nak@", "fault \"nak@\": the place \"\" is no number"},
        {"nak@5x0", "fault \"nak@5x0\": a count goes from 1 to 1000000, or is \"*\""},
        {"nak@5=1", "fault \"nak@5=1\": it has no value"},
        {"erase-nak@1", "fault \"erase-nak@1\": it has no place"},
        {"erase-slow", "fault \"erase-slow\": a value is missing"},
        {"erase-slow=1s", "fault \"erase-slow=1s\": the value \"1s\" is no number"},
        {"refuse=e4", "fault \"refuse=e4\": a place is missing"},
        {"deaf@100", "fault \"deaf@100\": the function \"100\" is not 0 to ff"},
        {"noise=fe8", "fault \"noise=fe8\": bytes are written as pairs of hexadecimal digits"},
        {"pieces=0", "fault \"pieces=0\": there is at least one piece"},
        {"delay@4294967296=1", "fault \"delay@4294967296=1\": the place \"4294967296\" is no number"},
    };
    for (const auto& row : rows) {
        try {
            Faults().add(row.text);
            ADD_FAILURE() << row.text;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), row.complaint);
        }
    }
}

constexpr const char* kVersionQuery = "010001005070";
constexpr const char* kRecord = "3a3031303031303030333342430d";  // :0100100033BC
constexpr const char* kErase = "02580d";

DeviceOptions with(std::initializer_list<std::string_view> faults, bool inBoot) {
    DeviceOptions options;
    options.version = "V1";
    options.versionEndsInNul = false;
    options.startsInBoot = inBoot;
    options.faults = faults;
    return options;
}

TEST(Faults, OfReplies) {
    const struct {
        const char* fault;
        const char* first;  // what two version queries, a second apart, are answered
        const char* second;
    } rows[] = {
        {"crc", "0:0100060256313c3b", "0:0100060256313c7b"},
        {"crc@01x2", "0:0100060256313c3b", "0:0100060256313c3b"},
        {"crc@02", "0:0100060256313c7b", "0:0100060256313c7b"},
        {"corrupt@2", "0:0100060256313c7b", "0:0100060216313c7b"},
        {"corrupt@1=2", "0:0100460256313c7b", "0:0100060256313c7b"},
        {"drop@1", "", "0:0100060256313c7b"},
        {"dropx*", "", ""},
        {"repeat@2", "0:0100060256313c7b", "0:0100060256313c7b0100060256313c7b"},
        {"delay@1=300", "300:0100060256313c7b", "0:0100060256313c7b"},
        {"delay@1=1300", "", "300:0100060256313c7b0100060256313c7b"},
        {"pieces=3/50", "0:010006 50:025631 100:3c7b", "0:010006 50:025631 100:3c7b"},
        {"pieces@2=20/1", "0:0100060256313c7b", "0:01 1:00 2:06 3:02 4:56 5:31 6:3c 7:7b"},
        {"noise=feff", "0:feff0100060256313c7b", "0:feff0100060256313c7b"},
        {"refuse@1=07", "0:0100150107b251", "0:0100150107b251"},
        {"deaf@1x1", "", "0:0100060256313c7b"},
        {"drop-byte@3", "", "0:0100060256313c7b"},
        {"corrupt-byte@12", "0:0100060256313c7b", ""},
    };
    for (const auto& row : rows) {
        Device device(with({row.fault}, false));
        Talk talk{device};
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), row.first) << row.fault;
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), row.second) << row.fault;
    }
}

TEST(Faults, OfTheBootLoader) {
    const struct {
        const char* fault;
        const char* heard;
        const char* said;
    } rows[] = {
        {"erase-nak", kErase, "0:15"},
        {"erase-mute", kErase, ""},
        {"erase-slow=900", kErase, "900:06"},
        {"prompt-pieces", "0d", "0:0d 20:0a 40:41 60:56 80:52 100:3e"},
        {"banner=0d58", "", "100:0d58"},
        {"boot-deaf=1", "0d", ""},
        {"nak@1", kRecord, "0:15"},
        {"nak@2", kRecord, "0:06"},
        {"nak@:0100100033BCx2", kRecord, "0:15"},
        {"nak@:0100100033BD", kRecord, "0:06"},
        {"mute", kRecord, ""},
        {"dots@1=2", kRecord, "0:2e 300:2e 600:06"},
    };
    for (const auto& row : rows) {
        Device device(with({row.fault}, true));
        EXPECT_EQ((Talk{device}.timeline(row.heard, 1000)), row.said) << row.fault;
    }
}

TEST(Faults, KeepARecordsNumberInEveryTry) {
    Device device(with({"nak@2x4", "mute@3"}, true));
    Talk talk{device};
    const auto round = [&] {
        return talk.line(":0100000044BB") + talk.line(":0100100033BC") + talk.line(":0100100033BC") +
               talk.line(":00000001FF");
    };
    EXPECT_EQ(round(), "061515");
    EXPECT_EQ(round(), "06151506");
    EXPECT_EQ(round(), "06060606");
    EXPECT_EQ(device.log().records.size(), 12U);
    talk.ask(kErase);
    talk.line(":00000001FF");
    device.faults().add("nak@1");
    EXPECT_EQ(talk.line(":00000001FF"), "15") << "an erase begins the count anew";
}

TEST(Faults, PullThePlug) {
    const struct {
        const char* fault;
        bool inBoot;
        const char* harmless;
        const char* deadly;
    } rows[] = {
        {"unplug@2", true, kRecord, "3a303030303030303146460d"},
        {"unplug-erase", true, kRecord, kErase},
        {"unplug-request@1f", false, kVersionQuery, "01001f00f079"},
        {"unplug-byte@7", false, kVersionQuery, "0d"},
        {"cut@2", false, kVersionQuery, kVersionQuery},
    };
    for (const auto& row : rows) {
        Device device(with({row.fault}, row.inBoot));
        Talk talk{device};
        EXPECT_NE(talk.ask(row.harmless), "") << row.fault;
        EXPECT_TRUE(device.isPlugged()) << row.fault;
        EXPECT_EQ(talk.ask(row.deadly), "") << row.fault;
        EXPECT_FALSE(device.isPlugged()) << row.fault;
        device.plugIn(talk.now);
        talk.ask(row.deadly);
        EXPECT_TRUE(device.isPlugged()) << row.fault << " strikes once";
    }
}

}  // namespace
}  // namespace corvane::models
