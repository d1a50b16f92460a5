#include "text/IntelHex.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(IntelHex, TakesALineApartOrSaysWhyItIsNoRecord) {
    const auto record = parseHexRecord(":0300300002337A1E");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->address, 0x0030);
    EXPECT_EQ(record->type, 0);
    EXPECT_EQ(record->data, (Bytes{0x02, 0x33, 0x7A}));
    EXPECT_TRUE(record->checksumRight);
    EXPECT_EQ(parseHexRecord(":020000040800f2")->type, 4);
    EXPECT_FALSE(parseHexRecord(":00000001FE")->checksumRight);
    const std::pair<HexFault, std::vector<const char*>> cases[] = {
        {HexFault::noColon, {"", "00000001FF", " :00000001FF"}},
        {HexFault::truncated, {":", ":00000001F", ":0300300002337A", ":0300300002337A1"}},
        {HexFault::notHexadecimal, {":0300300002337AG1", ":03 0300002337A1E", ":00000001FFG"}},
        {HexFault::tooLong, {":00000001FF0", ":00000001FF00"}},
        {HexFault::none, {":00000001FF"}},
    };
    for (const auto& [wanted, lines] : cases) {
        for (const char* line : lines) {
            HexFault fault = HexFault::none;
            EXPECT_EQ(parseHexRecord(line, &fault).has_value(), wanted == HexFault::none) << line;
            EXPECT_EQ(fault, wanted) << line;
        }
    }
}

}  // namespace
}  // namespace corvane
