#pragma once

#include <cstdint>

#include "platform/SerialControl.h"

struct termios2;  // the kernel's, from <asm/termbits.h>

namespace corvane {

/// All that a line is set to at once.
struct LineSetup {
    CommState state;
    int handShaking = 0;             ///< as the serial control numbers it
    bool marksParityErrors = false;  ///< a byte with a parity error arrives as FF 00 byte, and FF as FF FF
};

/// Whether any tty can do it: a rate above 0, 5 to 8 data bits, one and a half stop bits with 5 of them and only there.
bool isPossible(const CommState& state);

/// Bytes as they are: no echo, no signals, no translation, no time-outs of the system's own.
void makeRaw(termios2& line);

void apply(const LineSetup& setup, termios2& line);

/// Two stop bits and one and a half are one flag; the data bits tell which it means.
CommState stateOf(const termios2& line);

/// Whether the line took what was asked. Dividers do not reach every rate: 3 % off still carries bytes.
bool hasTaken(const CommState& line, const CommState& wanted);

}  // namespace corvane
