#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "models/Peer.h"

namespace corvane::models {

enum class Direction { toDevice, toHost };

/// Bytes that went over a line together.
struct Passage {
    Micros at = 0;  ///< when the host wrote them, or when the last of them reached the host
    Direction direction = Direction::toDevice;
    std::uint32_t rate = 0;  ///< bits a second
    Bytes bytes;
};

/// "    1.234567 > 19200 \x02X\x0D": seconds, the direction (">" is to the device), the rate, and the bytes, printable
/// ones but the backslash as they are. No line end.
std::string textOf(const Passage& passage);

/// Everything that went over a line, in order.
class Transcript {
public:
    void add(Passage passage);

    const std::vector<Passage>& passages() const { return passages_; }

    /// Bytes of a direction, and how long they keep the line busy at 10 bits a byte, within a span of time.
    std::size_t bytes(Direction direction, Micros from = 0, Micros to = kEnd) const;
    Micros wireTime(Micros from = 0, Micros to = kEnd) const;

    /// Called with every passage; with forgets, passages are not kept beside.
    void watch(std::function<void(const Passage&)> watcher, bool forgets);

private:
    static constexpr Micros kEnd = std::numeric_limits<Micros>::max();

    std::vector<Passage> passages_;
    std::function<void(const Passage&)> watcher_;
    bool forgets_ = false;
};

}  // namespace corvane::models
