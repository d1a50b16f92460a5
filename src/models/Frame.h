#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "text/Variant.h"

namespace corvane::models {

/// CRC-16 of a frame as a device computes it: polynomial 0x8005, each byte's low bit first, preset 0xFFFF, no final
/// XOR.
std::uint16_t frameCrc(const std::uint8_t* bytes, std::size_t count);

/// One request, taken apart.
struct Request {
    std::uint8_t address = 0;
    std::uint8_t function = 0;
    Bytes parameters;

    bool operator==(const Request&) const = default;
};

/// A reply of at most 255 data bytes: 01, address, status, length, data, CRC with its high byte first.
Bytes replyFrame(std::uint8_t address, std::uint8_t status, const Bytes& data);

/// What the encoded password stands for: every byte but the last was XORed with its right neighbour.
std::string decodedPassword(const Bytes& encoded);

/// Cuts requests out of what a device hears. Bytes ahead of a start mark are dropped, and so is a frame with a wrong
/// CRC.
class RequestReader {
public:
    /// The request that this byte completes.
    std::optional<Request> hear(std::uint8_t byte);

    /// Forgets the frame that has begun.
    void abandon() { frame_.clear(); }

    int badFrames() const { return badFrames_; }

private:
    Bytes frame_;
    int badFrames_ = 0;
};

}  // namespace corvane::models
