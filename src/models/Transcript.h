#pragma once

#include <functional>
#include <string>
#include <vector>

#include "models/Peer.h"

namespace corvane::models {

enum class Direction { toDevice, toHost };

/// Bytes that went over a line without a break.
struct Passage {
    Micros from = 0;  ///< when the host wrote, or received, the first of them
    Micros to = 0;    ///< the same of the last
    Direction direction = Direction::toDevice;
    std::uint32_t rate = 0;  ///< bits a second
    Bytes bytes;
};

/// "    1.234567 > 19200 \x02X\x0D": the seconds at its beginning, the direction (">" is to the device), the rate, and
/// the bytes, printable ones but the backslash as they are. No line end.
std::string textOf(const Passage& passage);

/// Everything that went over a line, in order.
class Transcript {
public:
    /// Bytes that were handed over at a moment. They join the passage before them when they go on where it stopped.
    void add(Micros at, Direction direction, std::uint32_t rate, const Bytes& bytes);

    /// From now on passages are not kept but handed over, each when it is complete; finish completes the last one.
    void handOver(std::function<void(const Passage&)> taker) { taker_ = std::move(taker); }
    void finish();

private:
    std::vector<Passage> passages_;
    std::function<void(const Passage&)> taker_;
};

}  // namespace corvane::models
