#include "protocol/LineReader.h"

#include "Dialogue.h"

namespace corvane::tests {

struct Line : Dialogue {
    Line() { connectPeer(); }
};

TEST_P(Line, EndsAReplyAsTheByteSays) {
    const std::tuple<std::string, std::string, int, std::string> cases[] = {
        {"noise\002A1\r", "", 13, "A1"},
        {"\r\r\002\rB\r", "", 13, "B"},         // empty lines do not count
        {"\002F\r\002F\002A\r", "F", 13, "A"},  // neither does a mere echo
        {"F1FA\r", "F", 13, "1FA"},             // cut after the first echo
        {"AF\r\x06", "F", 6, ""},
        {"\x15", "", 21, ""},
        {std::string("\002x\0y\xE9\r", 6), "", 13, std::string("x\0y\xE9", 4)},
        {"no end", "", 0, "no end"},
    };
    for (const auto& [bytes, echo, result, line] : cases) {
        peer->say(bench.runtime.ms() + 10, bytes);
        EXPECT_EQ(reader.wait_comm(0.5, echo), result) << bytes;
        EXPECT_EQ(session.receivedLine, line) << bytes;
        reader.wait_comm_empty();
    }
}

TEST_P(Line, WaitsForSilenceNotForTheWholeReplyAlsoPastMidnight) {
    for (const double second : {36000.0, 86399.4}) {
        for (const int gap : {490, 510}) {
            bench.runtime.secondsOfDayAtStart(second - static_cast<double>(bench.runtime.ms()) / 1000);
            const auto start = bench.runtime.ms();
            peer->say(start + 300, "\002A");
            peer->say(start + 300 + gap, "B\r");
            EXPECT_EQ(reader.wait_comm(0.5), gap < 500 ? 13 : 0) << gap;
            bench.runtime.Sleep(1000);
            bench.port.InBufferCount(0);
        }
    }
}

TEST_P(Line, EndsUnderEndlessBeginningsOfLines) {
    for (int ms = 0; ms < 30000; ms += 20) peer->say(begin + ms, "\002ttttttttt");
    EXPECT_EQ(reader.wait_comm(0.5), 0);
    expectMs(8100, 8300);  // 4096 bytes at half a byte a ms
}

/// What each operation has to do with a device that is silent, never stops talking, or is lost, and with Cancel.
TEST_P(Line, KeepsNothingWaitingForLong) {
    const auto goTo = [this](const char* protocol) {
        session.protocolName = protocol;
        return isp.GoToISP();
    };
    Variant reply = Bytes();
    std::string password = "quill";
    // silent, talking: ms; 0 where bytes are counted instead
    const std::tuple<const char*, std::function<bool()>, int, int> limits[] = {
        {"Query", [&] { return query.Query(1, reply, {}, 0, 3000); }, 3000, 8000},
        {"wait_comm", [&] { return reader.wait_comm(10) != 0; }, 10000, 0},
        {"wait_comm_empty", [&] { return reader.wait_comm_empty(), false; }, 500, 3000},
        {"DetectPrompt", [&] { return login.DetectPrompt(); }, 300, 3000},
        {"Login", [&] { return login.Login(password); }, 5000, 10000},
        {"GoToISP, TarnPlus", [&] { return goTo("TarnPlus"); }, 5000, 10000},
        {"GoToISP, Tarn", [&] { return goTo("Tarn"); }, 500, 0},
        {"ISP_Erase", [&] { return isp.ISP_Erase(); }, 10000, 0},
    };
    for (const auto& [name, operation, silent, talking] : limits) {
        SCOPED_TRACE(name);
        connectPeer();
        EXPECT_FALSE(operation());
        expectMs(silent, silent + 20);
        if (talking) {
            connectPeer();
            for (int ms = 0; ms < 2 * talking; ms += 20) peer->say(begin + ms, "tick ");
            EXPECT_FALSE(operation());
            expectMs(talking, talking + 60);
        }
        connectPeer();
        bench.runtime.at(begin + 70, [this] { cancel.request(); });
        EXPECT_FALSE(operation());
        expectMs(70, 75);
        cancel.begin();
        connectPeer().unplugAt(begin + 70);
        EXPECT_FALSE(operation());
        expectMs(70, 130);
        EXPECT_EQ(session.busyDepth, 0);
        EXPECT_TRUE(face.questions.empty());
    }
}

CORVANE_OVER_EACH_PORT(Line);

}  // namespace corvane::tests
