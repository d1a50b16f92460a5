#include "protocol/DeviceQuery.h"

#include "Dialogue.h"

namespace corvane::tests {

const Bytes kAsk = {0x01, 0x00, 0x01, 0x00, 0x50, 0x70};              // function 1
const Bytes kYes = {0x01, 0x00, 0x06, 0x02, 0x41, 0x42, 0x29, 0x35};  // accepted, "AB"
const Bytes kNo = {0x01, 0x00, 0x15, 0x01, 0xE4, 0x3B, 0x10};         // refused, 228

struct Query : Dialogue {
    Query() { connectPeer(); }
    bool ask() { return query.Query(1, reply, {}, 0, 1000); }

    Variant reply = Bytes{9};
};

TEST_P(Query, DeliversWhatARightFrameHolds) {
    bench.port.Settings("921600,N,8,1");  // so that what follows comes in the same piece
    const std::tuple<Bytes, bool, Variant, Variant> cases[] = {
        {kYes, true, Bytes{9}, Bytes{0x41, 0x42}},
        {kNo, false, std::uint8_t{9}, std::uint8_t{228}},
        {{0x01, 0x00, 0x00, 0x01, 0xE4, 0xFF, 0x01}, false, std::uint8_t{9}, std::uint8_t{228}},
        {{0xFE, 0x80, 0, 1, 0, 6, 2, 0x41, 0x42, 0x29, 0x35, 0x33}, true, Bytes{9}, Bytes{0x41, 0x42}},
        {{0x01, 0x00, 0x06, 0x02, 0x41, 0x42, 0x29, 0x34}, false, Bytes{9}, Bytes()},
    };
    for (const auto& [answer, accepted, asked, delivered] : cases) {
        peer->answer(kAsk, {{5, answer}});
        reply = asked;
        EXPECT_EQ(ask(), accepted);
        EXPECT_EQ(reply, delivered) << testing::PrintToString(answer);
        bench.runtime.Sleep(50);
        EXPECT_EQ(bench.port.InBufferCount(), 0);
    }
    peer->answer({0x01, 0x07, 0x01, 0x00, 0x91, 0xC1}, {{5, {0x01, 0x55, 0x06, 0x02, 0x41, 0x42, 0x25, 0x39}}});
    EXPECT_TRUE(query.Query(1, reply, {}, 7, 1000));
}

TEST_P(Query, TakesNoReplyFromBeforeItsQuestion) {
    peer->say(bench.runtime.ms() + 1, kYes);
    bench.runtime.Sleep(10);
    peer->answer(kAsk, {{5, kNo}});
    EXPECT_FALSE(ask());
    EXPECT_TRUE(query.wasAnswered());
    EXPECT_FALSE(ask());
    EXPECT_FALSE(query.wasAnswered());
}

TEST_P(Query, MeasuresSilenceFromThePieceBefore) {
    for (const int secondPieceAt : {1890, 1930}) {  // the first piece has come in by 903 to 910 ms
        peer->answer(
            kAsk, {{900, Bytes(kYes.begin(), kYes.begin() + 4)}, {secondPieceAt, Bytes(kYes.begin() + 4, kYes.end())}});
        EXPECT_EQ(ask(), secondPieceAt == 1890) << secondPieceAt;
        bench.runtime.Sleep(3000);
        bench.port.InBufferCount(0);
    }
}

TEST_P(Query, SendsNothingThatCannotBeAnswered) {
    bench.runtime.at(begin + 100, [this] { cancel.request(); });
    EXPECT_FALSE(ask());
    expectMs(100, 102);
    EXPECT_EQ(peer->heard(), kAsk);
    EXPECT_FALSE(ask());
    cancel.begin();
    EXPECT_FALSE(query.Query(1, reply, Bytes(256), 0, 1000));
    bench.runtime.Sleep(50);
    bench.port.PortOpen(false);
    const auto start = bench.runtime.ms();
    EXPECT_FALSE(ask());
    EXPECT_EQ(bench.runtime.ms(), start);
    EXPECT_EQ(peer->heard(), kAsk);
    session.busyDepth = 32767;
    EXPECT_THROW(ask(), RuntimeError);
}

CORVANE_OVER_EACH_PORT(Query);

}  // namespace corvane::tests
