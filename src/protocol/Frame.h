#pragma once

#include <optional>

#include "text/Variant.h"

namespace corvane {

/// CRC-16, reflected polynomial 0xA001, no final XOR, over lSize bytes from index lStart; the preset itself when lSize
/// is below 1. Throws RuntimeError when an index lies outside the bytes.
std::int32_t TarnPlusCRC16(const Bytes& pbBuffer, std::int32_t lStart, std::int32_t lSize, std::int32_t lCRCPreset);

/// How many bytes there are.
std::int32_t BytesSize(const Bytes& bytes);

/// The request: 0x01, address, function, count, parameters, CRC of all but the first, high byte first. Numbers go most
/// significant byte first, texts not at all. Nothing when there are more than 255 parameter bytes.
[[nodiscard]] std::optional<Bytes> requestFrame(std::uint8_t machine, std::uint8_t function, const Variant& parameter);

/// Puts a reply together out of whatever arrives. It has a request's layout with a status in place of the function.
class ReplyFrame {
public:
    static constexpr std::uint8_t kStart = 0x01;

    bool isBegun() const { return !bytes_.empty(); }

    /// Takes received bytes; True once the frame is complete. What precedes its 0x01 and what follows it is dropped.
    bool take(const Bytes& received);

    bool isComplete() const { return bytes_.size() >= 4 && bytes_.size() >= bytes_[3] + 6U; }
    bool isCrcRight() const;
    bool isAccepted() const { return bytes_[2] == 0x06; }
    Bytes data() const { return {bytes_.begin() + 4, bytes_.end() - 2}; }

private:
    Bytes bytes_;
};

/// Sets a variant to its type's empty value; a text or nothing stays as it is.
void resetReply(Variant& reply);

/// Converts a reply's data to the variant's type: all bytes, the first byte, or a number out of the first 2 or 4 bytes,
/// most significant first. No data leaves it as it is, and so does a variant of another type.
void convertReply(const Bytes& data, Variant& reply);

}  // namespace corvane
