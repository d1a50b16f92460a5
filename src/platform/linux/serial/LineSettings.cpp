#include "platform/linux/serial/LineSettings.h"

#include <asm/termbits.h>

namespace corvane {
namespace {

constexpr tcflag_t kDataBits[] = {CS5, CS6, CS7, CS8};
constexpr tcflag_t kParity[] = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR, PARENB | CMSPAR};
constexpr int kInputSpeedShift = 16;
constexpr cc_t kXon = 0x11;
constexpr cc_t kXoff = 0x13;

void put(tcflag_t& flags, tcflag_t mask, tcflag_t value) { flags = (flags & ~mask) | value; }

std::uint8_t parityOf(tcflag_t flags) {
    flags &= PARENB | PARODD | CMSPAR;
    for (std::uint8_t parity = 1; parity < 5; ++parity) {
        if (flags == kParity[parity]) return parity;
    }
    return 0;
}

}  // namespace

bool isPossible(const CommState& state) {
    if (state.baudRate == 0 || state.parity > 4 || state.dataBits < 5 || state.dataBits > 8) return false;
    return state.dataBits == 5 ? state.stopBits < 2 : state.stopBits == 0 || state.stopBits == 2;
}

void makeRaw(termios2& line) {
    line.c_iflag = IGNBRK;
    line.c_oflag = 0;
    line.c_lflag = 0;
    line.c_cflag |= CREAD | CLOCAL | HUPCL;
    line.c_cc[VMIN] = 1;  // with 0 a line without data would read like one that is gone
    line.c_cc[VTIME] = 0;
    line.c_cc[VSTART] = kXon;
    line.c_cc[VSTOP] = kXoff;
}

void apply(const LineSetup& setup, termios2& line) {
    const CommState& state = setup.state;
    put(line.c_cflag, CBAUD | CBAUD << kInputSpeedShift, BOTHER | BOTHER << kInputSpeedShift);
    line.c_ispeed = line.c_ospeed = state.baudRate;
    put(line.c_cflag, CSIZE, kDataBits[state.dataBits - 5]);
    put(line.c_cflag, PARENB | PARODD | CMSPAR, kParity[state.parity]);
    put(line.c_cflag, CSTOPB, state.stopBits ? CSTOPB : 0);
    put(line.c_cflag, CRTSCTS, setup.handShaking & 2 ? CRTSCTS : 0);
    put(line.c_iflag, IXON | IXOFF, setup.handShaking & 1 ? IXON | IXOFF : 0);
    // Without parity the same marks would stand for framing errors, which have an event of their own.
    put(line.c_iflag, INPCK | PARMRK, setup.marksParityErrors && state.parity ? INPCK | PARMRK : 0);
}

CommState stateOf(const termios2& line) {
    CommState state;
    state.baudRate = line.c_ospeed;
    state.parity = parityOf(line.c_cflag);
    state.dataBits = 5;
    while (kDataBits[state.dataBits - 5] != (line.c_cflag & CSIZE)) ++state.dataBits;
    const std::uint8_t longStop = state.dataBits == 5 ? 1 : 2;
    state.stopBits = line.c_cflag & CSTOPB ? longStop : 0;
    return state;
}

bool hasTaken(const CommState& line, const CommState& wanted) {
    const double difference = static_cast<double>(line.baudRate) - static_cast<double>(wanted.baudRate);
    const double allowed = 0.03 * static_cast<double>(wanted.baudRate);
    return difference <= allowed && -difference <= allowed && line.parity == wanted.parity &&
           line.dataBits == wanted.dataBits && line.stopBits == wanted.stopBits;
}

}  // namespace corvane
