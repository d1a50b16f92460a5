#pragma once

#include <cstdint>
#include <optional>

#include "text/Variant.h"

namespace corvane::models {

/// Microseconds on the clock of whoever drives the model.
using Micros = std::int64_t;

/// The far end of a line: bytes in with a time, bytes out with times. It never waits; its owner asks it.
class Peer {
public:
    virtual ~Peer() = default;

    /// Bytes that the host has sent at its line rate (bits a second) and that have arrived by now. None at all tells
    /// the rate alone.
    virtual void hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) = 0;

    /// When it next has something to say or to do; nothing while it only listens.
    virtual std::optional<Micros> nextAt() const = 0;

    /// What it has said up to now and not handed over yet.
    virtual Bytes speak(Micros now) = 0;

    /// False from the moment it is unplugged.
    virtual bool isPlugged() const { return true; }
};

}  // namespace corvane::models
