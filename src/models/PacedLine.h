#pragma once

#include <deque>

#include "models/Peer.h"
#include "models/Transcript.h"

namespace corvane::models {

/// The wire between a host and a device: each byte takes ten bits at the host's line rate, in both directions, which do
/// not disturb each other. The device behind it is not owned and must live longer.
class PacedLine : public Peer {
public:
    /// The rate (bits a second) is the line's until the host has sent something or set another one.
    explicit PacedLine(Peer& device, std::uint32_t rate = 19200) : device_(device), rate_(rate) {}

    /// Bytes that the host writes now. They reach the device one after the other; none at all changes the rate alone.
    void hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) override;

    /// Bytes that belong together may be handed over in one go, up to a millisecond late.
    std::optional<Micros> nextAt() const override;
    Bytes speak(Micros now) override;
    bool isPlugged() const override { return device_.isPlugged(); }

    /// Whether bytes of the host are still on their way.
    bool isCarrying() const { return !toDevice_.bytes.empty(); }

    Transcript& transcript() { return transcript_; }
    const Transcript& transcript() const { return transcript_; }

private:
    using Nanos = std::int64_t;

    struct Travelling {
        Nanos arrives;
        std::uint32_t rate;
        std::uint8_t byte;
    };
    /// One direction.
    struct Wire {
        std::deque<Travelling> bytes;
        Nanos freeAt = 0;

        void send(Nanos now, std::uint8_t byte, std::uint32_t rate);
        std::optional<Micros> nextAt() const;
    };

    void advance(Micros now);
    void cutOff();

    Peer& device_;
    std::uint32_t rate_;
    Wire toDevice_, toHost_;
    Transcript transcript_;
};

}  // namespace corvane::models
