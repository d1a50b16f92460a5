#include "protocol/LineReader.h"

#include <gtest/gtest.h>

#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/SerialBench.h"

namespace corvane {
namespace {

class Line : public ::testing::Test {
protected:
    Line() { bench.open(peer); }

    void babble(const std::string& start) {
        for (int ms = 0; ms < 30000; ms += 20) peer.say(ms, start + std::string(9, 't'));
    }

    fakes::SerialBench bench;
    fakes::ScriptedPeer peer;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    LineReader lines{session};
};

TEST_F(Line, EndsAReplyAsTheByteSays) {
    struct Case {
        std::string bytes, echo;
        int result;
        std::string line;
    };
    const Case cases[] = {
        {"\x02"
         "A1\r",
         "", 13, "A1"},
        {"noise\x02"
         "A\r",
         "", 13, "A"},
        {"\r\r\x02\rB\r", "", 13, "B"},  // empty lines do not count
        {"\x02"
         "F\r\x02"
         "F\x02"
         "A\r",
         "F", 13, "A"},              // neither does a mere echo
        {"F1FA\r", "F", 13, "1FA"},  // cut after the first echo
        {"AF\r\x06", "F", 6, ""},
        {"ab\x06", "", 6, "ab"},
        {"\x15", "", 21, ""},
        {std::string("\x02x\0y\xE9\r", 6), "", 13, std::string("x\0y\xE9", 4)},
        {"no end", "", 0, "no end"},
    };
    for (const auto& one : cases) {
        peer.say(bench.runtime.ms() + 10, one.bytes);
        EXPECT_EQ(lines.wait_comm(0.5, one.echo), one.result) << one.bytes;
        EXPECT_EQ(session.receivedLine, one.line) << one.bytes;
        lines.wait_comm_empty();
    }
}

TEST_F(Line, WaitsForSilenceNotForTheWholeReply) {
    for (const int gap : {490, 510}) {
        const auto start = bench.runtime.ms();
        peer.say(start + 100,
                 "\x02"
                 "A");
        peer.say(start + 100 + gap, "B\r");
        EXPECT_EQ(lines.wait_comm(0.5), gap < 500 ? 13 : 0) << gap;
        bench.runtime.Sleep(1000);
        bench.port.InBufferCount(0);
    }
    const auto start = bench.runtime.ms();
    EXPECT_EQ(lines.wait_comm(10), 0);
    EXPECT_GE(bench.runtime.ms() - start, 10000);
    EXPECT_LE(bench.runtime.ms() - start, 10010);
}

TEST_F(Line, KeepsItsTimePastMidnight) {
    bench.runtime.secondsOfDayAtStart(86399.8);
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_GE(bench.runtime.ms(), 500);
    EXPECT_LE(bench.runtime.ms(), 510);
    bench.runtime.secondsOfDayAtStart(86399.2);  // the next midnight comes 0.3 s from here
    peer.say(bench.runtime.ms() + 400, "\x06");
    EXPECT_EQ(lines.wait_comm(0.5), 6);
}

TEST_F(Line, IsEmptyAfterHalfASecondOfSilence) {
    peer.say(450, "late");
    peer.say(940, "later");
    lines.wait_comm_empty();
    EXPECT_GE(bench.runtime.ms(), 1440);
    EXPECT_LE(bench.runtime.ms(), 1460);
    EXPECT_EQ(bench.port.InBufferCount(), 0);
}

TEST_F(Line, EndsUnderEndlessTalk) {
    babble("t");
    lines.wait_comm_empty();
    EXPECT_GE(bench.runtime.ms(), 3000);
    EXPECT_LE(bench.runtime.ms(), 3010);
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_GE(session.receivedLine.size(), 4096U);
    EXPECT_LT(session.receivedLine.size(), 8300U);
}

TEST_F(Line, EndsUnderEndlessBeginningsOfLines) {
    babble("\x02");
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_EQ(session.receivedLine, std::string(9, 't'));
    EXPECT_LE(bench.runtime.ms(), 8300);  // 4096 bytes at half a byte a ms
}

TEST_F(Line, EndsAtOnceWhenCancelledOrUnplugged) {
    bench.runtime.at(100, [this] { session.cancel = true; });
    EXPECT_EQ(lines.wait_comm(10), 0);
    lines.wait_comm_empty();
    EXPECT_LE(bench.runtime.ms(), 102);
    session.cancel = false;
    peer.unplugAt(200);
    EXPECT_EQ(lines.wait_comm(10), 0);
    lines.wait_comm_empty();
    EXPECT_LE(bench.runtime.ms(), 202);
}

}  // namespace
}  // namespace corvane
