#include "models/PacedLine.h"

#include <algorithm>

namespace corvane::models {
namespace {

constexpr std::int64_t kNanosPerMicro = 1000;
constexpr std::int64_t kBitsPerByte = 10;
constexpr std::int64_t kLongestHold = 1000 * kNanosPerMicro;

std::int64_t byteTime(std::uint32_t rate) { return kBitsPerByte * 1000000000 / std::max<std::uint32_t>(rate, 1); }

}  // namespace

void PacedLine::Wire::send(Nanos now, std::uint8_t byte, std::uint32_t rate) {
    freeAt = std::max(now, freeAt) + byteTime(rate);
    bytes.push_back({freeAt, rate, byte});
}

std::optional<Micros> PacedLine::Wire::nextAt() const {
    if (bytes.empty()) return std::nullopt;
    const Nanos next = std::min(bytes.back().arrives, bytes.front().arrives + kLongestHold);
    return (next + kNanosPerMicro - 1) / kNanosPerMicro;
}

void PacedLine::hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) {
    advance(now);
    if (!isPlugged()) return;
    if (hostRate != rate_) {
        rate_ = hostRate;
        device_.hear(now, {}, hostRate);
    }
    for (const auto byte : bytes) toDevice_.send(now * kNanosPerMicro, byte, hostRate);
    transcript_.add(now, Direction::toDevice, hostRate, bytes);
}

/// Lets everything happen that was due by now, in order and each at its own time, however late the owner asks.
void PacedLine::advance(Micros now) {
    while (isPlugged()) {
        const auto says = device_.nextAt();
        const auto hears = toDevice_.bytes.empty()
                               ? std::nullopt
                               : std::optional((toDevice_.bytes.front().arrives + kNanosPerMicro - 1) / kNanosPerMicro);
        if (says && *says <= now && (!hears || *says <= *hears)) {
            for (const auto byte : device_.speak(*says)) toHost_.send(*says * kNanosPerMicro, byte, rate_);
        } else if (hears && *hears <= now) {
            const Travelling arrived = toDevice_.bytes.front();
            toDevice_.bytes.pop_front();
            device_.hear(*hears, {arrived.byte}, arrived.rate);
        } else {
            return;
        }
    }
    cutOff();
}

void PacedLine::cutOff() {
    toDevice_ = {};
    toHost_ = {};
}

std::optional<Micros> PacedLine::nextAt() const {
    std::optional<Micros> next;
    for (const auto& moment : {toDevice_.nextAt(), device_.nextAt(), toHost_.nextAt()}) {
        if (moment && (!next || *moment < *next)) next = moment;
    }
    return next;
}

Bytes PacedLine::speak(Micros now) {
    advance(now);
    Bytes bytes;
    while (!toHost_.bytes.empty() && toHost_.bytes.front().arrives <= now * kNanosPerMicro) {
        bytes.push_back(toHost_.bytes.front().byte);
        toHost_.bytes.pop_front();
    }
    transcript_.add(now, Direction::toHost, rate_, bytes);
    return bytes;
}

}  // namespace corvane::models
