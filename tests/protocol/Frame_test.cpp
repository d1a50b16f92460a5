#include "protocol/Frame.h"

#include <gtest/gtest.h>

#include "text/RuntimeError.h"

namespace corvane::tests {

TEST(Crc, HasItsCheckValueAndStaysInsideTheBytes) {
    const Bytes text = bytesOf(std::string("x123456789"));
    EXPECT_EQ(TarnPlusCRC16(text, 1, 9, 0xFFFF), 0x4B37);
    EXPECT_EQ(TarnPlusCRC16(text, 5, 5, TarnPlusCRC16(text, 1, 4, 0xFFFF)), 0x4B37);
    EXPECT_EQ(TarnPlusCRC16(text, 100, 0, 0x1234), 0x1234);
    EXPECT_THROW(TarnPlusCRC16(text, 2, 9, 0xFFFF), RuntimeError);
    EXPECT_THROW(TarnPlusCRC16(text, -1, 2, 0xFFFF), RuntimeError);
}

TEST(RequestFrame, CarriesEachKindOfParameter) {
    const std::pair<Variant, Bytes> cases[] = {{Bytes{7, 8, 9}, {3, 7, 8, 9}},
                                               {std::uint8_t{0xAB}, {1, 0xAB}},
                                               {std::int16_t{-2}, {2, 0xFF, 0xFE}},
                                               {std::int32_t{0x12345678}, {4, 0x12, 0x34, 0x56, 0x78}},
                                               {std::string("text"), {0}}};
    for (const auto& [parameter, body] : cases) {  // count and parameters
        const auto frame = requestFrame(0, 0x22, parameter);
        ASSERT_TRUE(frame);
        EXPECT_EQ((*frame)[2], 0x22);
        EXPECT_EQ(Bytes(frame->begin() + 3, frame->end() - 2), body);
    }
    EXPECT_EQ(requestFrame(0, 0, {}), (Bytes{0x01, 0x00, 0x00, 0x00, 0xC0, 0x71}));
    EXPECT_EQ(requestFrame(0, 9, Bytes(255, 1))->size(), 261U);
    EXPECT_FALSE(requestFrame(0, 9, Bytes(256, 1)));
}

TEST(Reply, IsConvertedToTheTypeThatIsAskedFor) {
    const Bytes three = {0x81, 0x02, 0x03};
    const std::tuple<Bytes, Variant, Variant> cases[] = {
        {three, Bytes{1}, three},
        {three, std::uint8_t{9}, std::uint8_t{0x81}},
        {three, std::int16_t{9}, std::int16_t{-32510}},
        {three, std::int32_t{9}, std::int32_t{0x810203}},
        {{0xFF, 0xFF, 0xFF, 0xFE, 1}, std::int32_t{9}, std::int32_t{-2}},
        {{}, std::int32_t{9}, std::int32_t{0}},
        {three, std::string("kept"), std::string("kept")},
    };
    for (const auto& [data, asked, converted] : cases) {
        auto reply = asked;
        resetReply(reply);
        convertReply(data, reply);
        EXPECT_EQ(reply, converted);
    }
}

}  // namespace corvane::tests
