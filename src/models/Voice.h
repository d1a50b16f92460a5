#pragma once

#include <deque>
#include <optional>

#include "models/DeviceLog.h"
#include "models/Faults.h"
#include "models/Peer.h"

namespace corvane::models {

/// What a device says and when. It says one thing after the other, as a transmitter does: something that is late holds
/// up what comes behind it.
class Voice {
public:
    Voice(Faults& faults, DeviceLog& log) : faults_(faults), log_(log) {}

    /// An answer to the host. It is counted, and the faults of replies strike here. False when the device is unplugged
    /// instead of answering.
    [[nodiscard]] bool reply(Micros at, const Bytes& bytes);

    /// Says something that answers nothing (a banner, say): it is not counted, and no fault strikes it.
    void say(Micros at, const Bytes& bytes);

    std::optional<Micros> nextAt() const;
    Bytes take(Micros now);
    void hush() { queue_.clear(); }

private:
    struct Part {
        Micros at;
        Bytes bytes;
    };

    void sayInPieces(Micros at, const Bytes& bytes, std::uint32_t pieces, Micros gap);

    Faults& faults_;
    DeviceLog& log_;
    std::deque<Part> queue_;
};

}  // namespace corvane::models
