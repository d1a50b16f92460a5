#include <gtest/gtest.h>

#include "models/Device.h"
#include "models/PacedLine.h"
#include "text/Number.h"

namespace corvane::models::tests {

constexpr const char* kVersionQuery = "010001005070";
const std::string kErase = "02580d", kRecord = "3a3031303031303030333342430d";  // :0100100033BC

Bytes fromHex(std::string_view digits) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(hexNumber(digits.substr(at, 2)).value()));
    }
    return bytes;
}

std::string toHex(const Bytes& bytes) {
    std::string digits;
    for (const auto byte : bytes) {
        for (const auto half : {byte >> 4, byte & 15}) digits += "0123456789abcdef"[half];
    }
    return digits;
}

/// A host that talks to a peer in virtual time and writes down what it hears.
struct Talk {
    Peer& peer;
    std::uint32_t rate = 19200;
    Micros now = 0;

    /// Says the bytes (in hexadecimal), then listens for a while: "MS:HEX", one for each moment at which something came
    /// in, MS counted from the question.
    std::string timeline(std::string_view hex, Micros listenMs) {
        std::string heard;
        const Micros asked = now;
        peer.hear(now, fromHex(hex), rate);
        for (const Micros end = now + listenMs * 1000;;) {
            const auto next = peer.nextAt();
            now = std::min(std::max(now, next.value_or(end)), end);
            if (!next || *next > end) return heard;
            const Bytes bytes = peer.speak(now);
            if (bytes.empty()) continue;
            heard += (heard.empty() ? "" : " ") + std::to_string((now - asked) / 1000) + ":" + toHex(bytes);
        }
    }

    /// What comes at once.
    std::string ask(std::string_view hex) {
        const std::string heard = timeline(hex, 0);
        return heard.empty() ? "" : heard.substr(2);
    }
};

TEST(TarnPlusDevice, ForgetsAFrameThatDoesNotGoOn) {
    Device device({.version = "V1"});
    Talk talk{device};
    talk.timeline("0100", 501);
    EXPECT_EQ(talk.ask("010501005160"), "010506035631008a7d") << "its own address, and the version with its NUL";
    talk.timeline("010001", 499);
    EXPECT_EQ(talk.ask("005070"), "01000603563100df7d");
}

TEST(BootLoader, RestartsIntoAnApplicationOnlyWhenThereIsOne) {
    const std::tuple<std::string, bool, bool> rows[] = {// what it hears, and whether it stays after a restart or a loss
                                                        {"", false, false},
                                                        {kErase, true, true},
                                                        {kErase + kRecord, false, true},
                                                        {kErase + kRecord + "3a303030303030303146460d", false, false}};
    for (const auto& [heard, staysAfterRestart, staysAfterPowerLoss] : rows) {
        for (const bool powerLoss : {false, true}) {
            Device device({.startsInBoot = true});
            Talk talk{device};
            talk.ask(heard);
            if (powerLoss) device.unplug();
            EXPECT_EQ(talk.ask("02520d"), "");  // the request for a restart
            if (powerLoss) device.plugIn(talk.now);
            EXPECT_EQ(device.isInBoot(), powerLoss ? staysAfterPowerLoss : staysAfterRestart) << heard;
        }
    }
}

TEST(Faults, OfReplies) {
    // fault, first, second: what two version queries, a second apart, are answered
    const std::tuple<const char*, const char*, const char*> rows[] = {
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
    for (const auto& [fault, first, second] : rows) {
        Device device({.version = "V1", .versionEndsInNul = false, .faults = {fault}});
        Talk talk{device};
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), first) << fault;
        EXPECT_EQ(talk.timeline(kVersionQuery, 1000), second) << fault;
    }
}

TEST(Faults, KeepARecordsNumberInEveryTry) {
    Device device({.startsInBoot = true, .faults = {"nak@2x4", "mute@3"}});
    Talk talk{device};
    const auto send = [&](const std::string& record) { return talk.ask(toHex(bytesOf(record + "\r"))); };
    const auto round = [&] {
        std::string said;
        for (const char* line : {":0100000044BB", ":0100100033BC", ":0100100033BC", ":00000001FF"}) said += send(line);
        return said;
    };
    EXPECT_EQ(round() + " " + round() + " " + round(), "061515 06151506 06060606");
    talk.ask(kErase);
    send(":00000001FF");
    device.faults().add("nak@1");
    EXPECT_EQ(send(":00000001FF"), "15") << "an erase begins the count anew";
}

TEST(RecordWriter, PutsRecordsWhereTheyBelong) {
    const std::pair<std::vector<const char*>, std::map<std::uint32_t, std::uint8_t>> rows[] = {
        {{":020000001122CB"}, {{0, 0x11}, {1, 0x22}}},
        {{":01000000F00F", ":0100000044BB"}, {{0, 0x40}}},  // programming only clears bits
        {{":020000021000EC", ":0100100033BC"}, {{0x10010, 0x33}}},
        {{":020000040001F9", ":02FFFF00A55A01"}, {{0x10000, 0x5A}, {0x1FFFF, 0xA5}}},
        {{":020000040001F9", ":00000001FF", ":0100100033BC"}, {{0x10, 0x33}}},
        {{":0400000500000100F6", ":0400000300000100F8", ":010000090FE7"}, {}},
    };
    for (const auto& [records, cells] : rows) {
        Flash flash;
        RecordWriter writer(flash);
        for (const auto* record : records) EXPECT_NE(writer.take(record), RecordWriter::Taken::refused) << record;
        EXPECT_EQ(flash.contents(), cells) << records[0];
    }
    Flash flash;
    for (const auto* text :
         {"", ":00000001FE", ":0100000000", "00000001FF", ":00000001FFF", ":00000006FA", ":0100000400FB"}) {
        EXPECT_EQ(RecordWriter(flash).take(text), RecordWriter::Taken::refused) << text;
    }
    EXPECT_TRUE(flash.contents().empty());
}

TEST(Comparison, SaysWhereAndWhat) {
    const Image image = imageOf("[INFO]\r\nPGM=X\r\n:020000001122CB\r\n:0100100033BC\r\n:00000001FF\r\n");
    Flash memory;
    EXPECT_EQ(comparison(memory, image), "memory differs at 0x00000: holds 0xFF, image 0x11; differing cells: 3");
    RecordWriter writer(memory);
    writer.take(":020000001122CB");
    EXPECT_EQ(comparison(memory, image), "memory differs at 0x00010: holds 0xFF, image 0x33; differing cells: 1");
    writer.take(":0100100033BC");
    EXPECT_EQ(comparison(memory, image), "memory equals image");
    memory.program(0x20005, 0xFE);
    EXPECT_EQ(comparison(memory, image), "memory differs at 0x20005: holds 0xFE, image 0xFF; differing cells: 1");
    EXPECT_EQ(comparison(memory, imageOf("x\n:00000001FE\n")),
              "memory cannot equal image: its line 2 is no sound record");
}

TEST(PacedLine, GivesEveryByteItsTimeAndNotesWhatWentOverIt) {
    const std::tuple<std::uint32_t, const char*, const char*> rows[] = {
        {1200, "59:01 67:00",
         "    0.000000 > 1200 \\x01\\x00\\x01\\x00Pp\n    0.059334 < 1200 \\x01\n    0.067667 < 1200 \\x00\n"},
        {9600, "8:01 9:00 10:06 11:03 12:56 13:31 14:00 15:df 15:7d",
         "    0.000000 > 9600 \\x01\\x00\\x01\\x00Pp\n    0.008292 < 9600 \\x01\\x00\\x06\\x03V1\\x00\\xDF}\n"},
    };
    for (const auto& [rate, heard, notes] : rows) {
        Device device({.version = "V1", .baud = rate});
        PacedLine line(device);
        std::string noted;
        line.transcript().handOver([&](const Passage& passage) { noted += textOf(passage) + "\n"; });
        Talk talk{line, rate};
        EXPECT_EQ(talk.timeline(kVersionQuery, 70), heard) << rate;
        device.unplug();
        EXPECT_EQ(talk.timeline("", 1000), "") << "what it said is lost with it";
        line.transcript().finish();
        EXPECT_EQ(noted, notes);
    }
}

}  // namespace corvane::models::tests
