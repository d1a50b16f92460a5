#include "protocol/DeviceQuery.h"

#include <gtest/gtest.h>

#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

const Bytes kAsk = {0x01, 0x00, 0x01, 0x00, 0x50, 0x70};              // function 1
const Bytes kYes = {0x01, 0x00, 0x06, 0x02, 0x41, 0x42, 0x29, 0x35};  // accepted, "AB"
const Bytes kNo = {0x01, 0x00, 0x15, 0x01, 0xE4, 0x3B, 0x10};         // refused, 228
const Bytes kOddNo = {0x01, 0x00, 0x00, 0x01, 0xE4, 0xFF, 0x01};      // neither accepted nor a known refusal
const Bytes kFromOther = {0x01, 0x55, 0x06, 0x02, 0x41, 0x42, 0x25, 0x39};

class Query : public fakes::OverEachPort {
protected:
    Query() { bench.open(peer); }

    bool ask(std::int32_t timeout = 1000) { return query.Query(1, reply, {}, 0, timeout); }

    fakes::ScriptedPeer peer;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    DeviceQuery query{session};
    Variant reply = Bytes{9};
};

TEST_P(Query, DeliversAcceptedAndRefusedData) {
    peer.answer(kAsk, {{5, kYes}});
    EXPECT_TRUE(ask());
    EXPECT_EQ(reply, Variant(Bytes{0x41, 0x42}));
    EXPECT_EQ(peer.heard(), kAsk);

    for (const auto& refusal : {kNo, kOddNo}) {
        peer.answer(kAsk, {{5, refusal}});
        reply = std::uint8_t{1};
        EXPECT_FALSE(ask());
        EXPECT_EQ(reply, Variant(std::uint8_t{228}));
    }
    peer.answer({0x01, 0x07, 0x01, 0x00, 0x91, 0xC1}, {{5, kFromOther}});
    EXPECT_TRUE(query.Query(1, reply, {}, 7, 1000));
    EXPECT_EQ(reply, Variant(std::uint8_t{0x41}));
}

TEST_P(Query, SkipsNoiseAndDropsWhatFollows) {
    bench.port.Settings("921600,N,8,1");  // so that what follows comes in the same piece
    Bytes noisy = {0xFE, 0x80, 0x00};
    noisy.insert(noisy.end(), kYes.begin(), kYes.end());
    noisy.insert(noisy.end(), {0x33, 0x44});
    peer.answer(kAsk, {{5, noisy}});
    EXPECT_TRUE(ask());
    EXPECT_EQ(reply, Variant(Bytes{0x41, 0x42}));
    bench.runtime.Sleep(50);
    EXPECT_EQ(bench.port.InBufferCount(), 0);
}

TEST_P(Query, TakesNoReplyFromBeforeItsQuestion) {
    peer.say(bench.runtime.ms() + 1, kYes);
    bench.runtime.Sleep(10);
    peer.answer(kAsk, {{5, kNo}});
    EXPECT_FALSE(ask());
    EXPECT_TRUE(query.wasAnswered());
    EXPECT_FALSE(ask());
    EXPECT_FALSE(query.wasAnswered());
}

TEST_P(Query, RefusesABrokenCrcWithItsDataDropped) {
    Bytes broken = kYes;
    broken.back() ^= 1;
    peer.answer(kAsk, {{5, broken}});
    EXPECT_FALSE(ask());
    EXPECT_EQ(reply, Variant(Bytes()));
}

TEST_P(Query, MeasuresSilenceFromThePieceBefore) {
    struct Case {
        int secondPieceAt;
        bool arrivesInTime;
    };
    for (const auto& one : {Case{1890, true}, Case{1930, false}}) {  // the first piece has come in by 903 to 910 ms
        peer.answer(kAsk, {{900, Bytes(kYes.begin(), kYes.begin() + 4)},
                           {one.secondPieceAt, Bytes(kYes.begin() + 4, kYes.end())}});
        EXPECT_EQ(ask(), one.arrivesInTime) << one.secondPieceAt;
        bench.runtime.Sleep(3000);
        bench.port.InBufferCount(0);
    }
}

TEST_P(Query, GivesUpAfterItsTimeOfSilence) {
    const auto start = bench.runtime.ms();
    EXPECT_FALSE(ask(3000));
    EXPECT_GE(bench.runtime.ms() - start, 3000);
    EXPECT_LE(bench.runtime.ms() - start, 3010);
    EXPECT_EQ(session.busyDepth, 0);
}

TEST_P(Query, EndsUnderEndlessTalk) {
    const auto start = bench.runtime.ms();
    for (int ms = 0; ms < 20000; ms += 50) peer.say(start + ms, "tick ");
    EXPECT_FALSE(ask(3000));
    EXPECT_GE(bench.runtime.ms() - start, 8000);
    EXPECT_LE(bench.runtime.ms() - start, 8010);
}

TEST_P(Query, IsAbandonedByFlagsAndByALostPort) {
    const auto start = bench.runtime.ms();
    bench.runtime.at(start + 100, [this] { session.stop = true; });
    EXPECT_FALSE(ask());
    EXPECT_LE(bench.runtime.ms() - start, 102);
    bench.runtime.at(start + 200, [this] { session.cancel = true; });
    EXPECT_FALSE(ask());
    EXPECT_LE(bench.runtime.ms() - start, 202);
    const auto said = peer.heard().size();
    EXPECT_FALSE(ask());
    bench.runtime.Sleep(50);
    EXPECT_EQ(peer.heard().size(), said);
    session.cancel = false;
    peer.unplugAt(start + 400);
    EXPECT_FALSE(ask());
    EXPECT_LE(bench.runtime.ms() - start, 402);
}

TEST_P(Query, SendsNothingOnAClosedPortOrWithTooManyParameters) {
    EXPECT_FALSE(query.Query(1, reply, Bytes(256), 0, 1000));
    bench.port.PortOpen(false);
    const auto start = bench.runtime.ms();
    EXPECT_FALSE(ask());
    EXPECT_TRUE(peer.heard().empty());
    EXPECT_EQ(reply, Variant(Bytes()));
    EXPECT_EQ(bench.runtime.ms(), start);
    session.busyDepth = 32767;
    EXPECT_THROW(ask(), RuntimeError);
}

CORVANE_OVER_EACH_PORT(Query);

}  // namespace
}  // namespace corvane
