#include "protocol/LineReader.h"

#include <gtest/gtest.h>

#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

class Line : public fakes::OverEachPort {
protected:
    Line() {
        bench.open(peer);
        begin = bench.runtime.ms();
    }

    void babble(const std::string& start) {
        for (int ms = 0; ms < 30000; ms += 20) peer.say(begin + ms, start + std::string(9, 't'));
    }

    /// The time of day that it is now.
    void secondsOfDay(double seconds) const {
        bench.runtime.secondsOfDayAtStart(seconds - static_cast<double>(bench.runtime.ms()) / 1000);
    }

    /// Since the test's begin, when the port was open.
    std::int64_t ms() const { return bench.runtime.ms() - begin; }

    fakes::ScriptedPeer peer;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    LineReader lines{session};
    std::int64_t begin = 0;
};

TEST_P(Line, EndsAReplyAsTheByteSays) {
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

TEST_P(Line, WaitsForSilenceNotForTheWholeReply) {
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

TEST_P(Line, KeepsItsTimePastMidnight) {
    secondsOfDay(86399.8);
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_GE(ms(), 500);
    EXPECT_LE(ms(), 510);
    secondsOfDay(86399.7);
    peer.say(bench.runtime.ms() + 400, "\x06");
    EXPECT_EQ(lines.wait_comm(0.5), 6);
}

TEST_P(Line, IsEmptyAfterHalfASecondOfSilence) {
    peer.say(begin + 450, "late");
    peer.say(begin + 940, "later");
    lines.wait_comm_empty();
    EXPECT_GE(ms(), 1440);
    EXPECT_LE(ms(), 1460);
    EXPECT_EQ(bench.port.InBufferCount(), 0);
}

TEST_P(Line, EndsUnderEndlessTalk) {
    babble("t");
    lines.wait_comm_empty();
    EXPECT_GE(ms(), 3000);
    EXPECT_LE(ms(), 3010);
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_GE(session.receivedLine.size(), 4096U);
    EXPECT_LT(session.receivedLine.size(), 8300U);
}

TEST_P(Line, EndsUnderEndlessBeginningsOfLines) {
    bench.port.Settings("921600,N,8,1");  // so that each beginning comes in one piece
    babble("\x02");
    EXPECT_EQ(lines.wait_comm(0.5), 0);
    EXPECT_EQ(session.receivedLine, std::string(9, 't'));
    EXPECT_LE(ms(), 8300);  // 4096 bytes at half a byte a ms
}

TEST_P(Line, EndsAtOnceWhenCancelledOrUnplugged) {
    bench.runtime.at(begin + 100, [this] { session.cancel = true; });
    EXPECT_EQ(lines.wait_comm(10), 0);
    lines.wait_comm_empty();
    EXPECT_LE(ms(), 102);
    session.cancel = false;
    peer.unplugAt(begin + 200);
    EXPECT_EQ(lines.wait_comm(10), 0);
    lines.wait_comm_empty();
    EXPECT_LE(ms(), 202);
}

CORVANE_OVER_EACH_PORT(Line);

}  // namespace
}  // namespace corvane
