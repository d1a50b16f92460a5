#include "platform/linux/LineSettings.h"

#include <asm/termbits.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(LineSettings, FlagsOfEachField) {
    const struct {
        CommState state;
        tcflag_t flags;
    } cases[] = {
        {{9600, 0, 8, 0}, CS8},
        {{300, 1, 7, 0}, CS7 | PARENB | PARODD},
        {{57600, 2, 6, 2}, CS6 | PARENB | CSTOPB},
        {{128000, 3, 8, 0}, CS8 | PARENB | PARODD | CMSPAR},
        {{921600, 4, 8, 2}, CS8 | PARENB | CMSPAR | CSTOPB},
        {{1500, 0, 5, 1}, CS5 | CSTOPB},
    };
    termios2 line{};
    line.c_cflag = B38400 | CS6 | PARENB | CMSPAR | CSTOPB | CLOCAL | CREAD;
    for (const auto& c : cases) {
        apply({c.state}, line);
        EXPECT_EQ(line.c_cflag, c.flags | BOTHER | BOTHER << 16 | CLOCAL | CREAD) << c.state.baudRate;
        EXPECT_EQ(line.c_ispeed, c.state.baudRate);
        EXPECT_EQ(stateOf(line), c.state);
    }
}

TEST(LineSettings, HandShakingAndParityMarks) {
    const struct {
        LineSetup setup;
        tcflag_t input, control;
    } cases[] = {
        {{{9600, 0, 8, 0}, 0, false}, 0, 0},
        {{{9600, 0, 8, 0}, 1, true}, IXON | IXOFF, 0},
        {{{9600, 2, 8, 0}, 2, true}, INPCK | PARMRK, CRTSCTS},
        {{{9600, 2, 8, 0}, 3, false}, IXON | IXOFF, CRTSCTS},
    };
    for (const auto& c : cases) {
        termios2 line{};
        line.c_iflag = INPCK | PARMRK | IXON | IXOFF;
        line.c_cflag = CRTSCTS;
        apply(c.setup, line);
        EXPECT_EQ(line.c_iflag, c.input) << c.setup.handShaking;
        EXPECT_EQ(line.c_cflag & CRTSCTS, c.control) << c.setup.handShaking;
    }
}

TEST(LineSettings, RawLineLosesNothingAndAddsNothing) {
    termios2 line{};
    line.c_iflag = ICRNL | ISTRIP | INLCR | IUCLC | IXON | BRKINT;
    line.c_oflag = OPOST | ONLCR;
    line.c_lflag = ECHO | ICANON | ISIG | IEXTEN;
    makeRaw(line);
    EXPECT_EQ(line.c_iflag, static_cast<tcflag_t>(IGNBRK));
    EXPECT_EQ(line.c_oflag, 0u);
    EXPECT_EQ(line.c_lflag, 0u);
    EXPECT_EQ(line.c_cc[VMIN], 1);
}

TEST(LineSettings, WhatALineHasTaken) {
    const CommState wanted{128000, 2, 8, 0};
    const struct {
        CommState line;
        bool taken;
    } cases[] = {
        {{128000, 2, 8, 0}, true},  {{125000, 2, 8, 0}, true},  {{131500, 2, 8, 0}, true},  {{115200, 2, 8, 0}, false},
        {{132000, 2, 8, 0}, false}, {{128000, 0, 8, 0}, false}, {{128000, 2, 7, 0}, false}, {{128000, 2, 8, 2}, false},
    };
    for (const auto& c : cases) EXPECT_EQ(hasTaken(c.line, wanted), c.taken) << c.line.baudRate;
}

}  // namespace
}  // namespace corvane
