#include "models/Flash.h"

#include <gtest/gtest.h>

namespace corvane::models {
namespace {

using Cells = std::map<std::uint32_t, std::uint8_t>;

TEST(RecordWriter, PutsRecordsWhereTheyBelong) {
    const std::pair<std::vector<const char*>, Cells> rows[] = {
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
}

TEST(RecordWriter, RefusesWhatDoesNotAddUp) {
    for (const auto* text :
         {"", ":00000001FE", ":0100000000", "00000001FF", ":00000001FFF", ":00000006FA", ":0100000400FB"}) {
        Flash flash;
        EXPECT_EQ(RecordWriter(flash).take(text), RecordWriter::Taken::refused) << text;
        EXPECT_TRUE(flash.contents().empty()) << text;
    }
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

}  // namespace
}  // namespace corvane::models
