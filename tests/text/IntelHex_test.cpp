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
    const std::pair<const char*, HexFault> cases[] = {
        {"", HexFault::noColon},
        {" :00000001FF", HexFault::noColon},
        {":", HexFault::truncated},
        {":0300300002337A1", HexFault::truncated},
        {":0300300002337AG1", HexFault::notHexadecimal},
        {":00000001FFG", HexFault::notHexadecimal},
        {":00000001FF0", HexFault::tooLong},
    };
    for (const auto& [line, wanted] : cases) {
        HexFault fault = HexFault::none;
        EXPECT_FALSE(parseHexRecord(line, &fault)) << line;
        EXPECT_EQ(fault, wanted) << line;
    }
}

}  // namespace
}  // namespace corvane
