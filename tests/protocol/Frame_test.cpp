#include "protocol/Frame.h"

#include <gtest/gtest.h>

#include "text/RuntimeError.h"

namespace corvane {
namespace {

TEST(Crc, HasItsCheckValueAndStaysInsideTheBytes) {
    const Bytes text = bytesOf(std::string("x123456789"));
    EXPECT_EQ(TarnPlusCRC16(text, 1, 9, 0xFFFF), 0x4B37);
    EXPECT_EQ(TarnPlusCRC16(text, 5, 5, TarnPlusCRC16(text, 1, 4, 0xFFFF)), 0x4B37);
    EXPECT_EQ(TarnPlusCRC16(text, 100, 0, 0x1234), 0x1234);
    EXPECT_THROW(TarnPlusCRC16(text, 2, 9, 0xFFFF), RuntimeError);
    EXPECT_THROW(TarnPlusCRC16(text, -1, 2, 0xFFFF), RuntimeError);
}

TEST(RequestFrame, CarriesEachKindOfParameter) {
    struct Case {
        Variant parameter;
        Bytes body;  // count and parameters
    };
    const Case cases[] = {
        {{}, {0}},
        {Bytes(), {0}},
        {Bytes{7, 8, 9}, {3, 7, 8, 9}},
        {std::uint8_t{0xAB}, {1, 0xAB}},
        {std::int16_t{0x1234}, {2, 0x12, 0x34}},
        {std::int16_t{-2}, {2, 0xFF, 0xFE}},
        {std::int32_t{1}, {4, 0, 0, 0, 1}},
        {std::int32_t{-2}, {4, 0xFF, 0xFF, 0xFF, 0xFE}},
        {std::string("text"), {0}},
    };
    for (const auto& one : cases) {
        const auto frame = requestFrame(0, 0x22, one.parameter);
        ASSERT_TRUE(frame);
        Bytes wanted = {0x01, 0, 0x22};
        wanted.insert(wanted.end(), one.body.begin(), one.body.end());
        EXPECT_EQ(Bytes(frame->begin(), frame->end() - 2), wanted);
    }
    EXPECT_EQ(requestFrame(0, 0, {}), (Bytes{0x01, 0x00, 0x00, 0x00, 0xC0, 0x71}));
    EXPECT_EQ(requestFrame(0, 9, Bytes(255, 1))->size(), 261U);
    EXPECT_FALSE(requestFrame(0, 9, Bytes(256, 1)));
}

TEST(Reply, IsConvertedToTheTypeThatIsAskedFor) {
    const Bytes three = {0x81, 0x02, 0x03};
    const auto converted = [](const Bytes& data, Variant reply) {
        resetReply(reply);
        convertReply(data, reply);
        return reply;
    };
    EXPECT_EQ(converted(three, Bytes{1}), Variant(three));
    EXPECT_EQ(converted(three, std::uint8_t{9}), Variant(std::uint8_t{0x81}));
    EXPECT_EQ(converted(three, std::int16_t{9}), Variant(std::int16_t{-32510}));
    EXPECT_EQ(converted({5}, std::int16_t{9}), Variant(std::int16_t{5}));
    EXPECT_EQ(converted(three, std::int32_t{9}), Variant(std::int32_t{0x810203}));
    EXPECT_EQ(converted({0xFF, 0xFF, 0xFF, 0xFE, 1}, std::int32_t{9}), Variant(std::int32_t{-2}));
    EXPECT_EQ(converted({}, std::int32_t{9}), Variant(std::int32_t{0}));
    EXPECT_EQ(converted(three, std::string("kept")), Variant(std::string("kept")));
}

}  // namespace
}  // namespace corvane
