#include "models/Frame.h"

#include <utility>

namespace corvane::models {
namespace {

constexpr std::uint8_t kStart = 0x01;
constexpr std::size_t kAround = 6;  // bytes of a frame beside its data

std::uint16_t mirrored(std::uint16_t value) {
    std::uint16_t result = 0;
    for (int bit = 0; bit < 16; ++bit) result = static_cast<std::uint16_t>(result << 1 | (value >> bit & 1));
    return result;
}

}  // namespace

// Written as the division is defined, with the register's high bit leading, and not in the usual mirrored form: the
// program that talks to the models has that one, and the two must not share a mistake.
std::uint16_t frameCrc(const std::uint8_t* bytes, std::size_t count) {
    std::uint16_t remainder = 0xFFFF;
    for (std::size_t i = 0; i < count; ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            const bool carry = (remainder >> 15 ^ (bytes[i] >> bit & 1)) != 0;
            remainder = static_cast<std::uint16_t>(remainder << 1);
            if (carry) remainder ^= 0x8005;
        }
    }
    return mirrored(remainder);
}

Bytes replyFrame(std::uint8_t address, std::uint8_t status, const Bytes& data) {
    Bytes frame;
    frame.reserve(data.size() + kAround);
    for (const auto byte : {kStart, address, status, static_cast<std::uint8_t>(data.size())}) frame.push_back(byte);
    frame.insert(frame.end(), data.begin(), data.end());
    const auto crc = frameCrc(frame.data() + 1, frame.size() - 1);
    frame.push_back(static_cast<std::uint8_t>(crc >> 8));
    frame.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    return frame;
}

std::string decodedPassword(const Bytes& encoded) {
    std::string password(encoded.size(), '\0');
    std::uint8_t right = 0;
    for (std::size_t i = encoded.size(); i-- > 0;) {
        right ^= encoded[i];
        password[i] = static_cast<char>(right);
    }
    return password;
}

std::optional<Request> RequestReader::hear(std::uint8_t byte) {
    if (frame_.empty() && byte != kStart) return std::nullopt;
    frame_.push_back(byte);
    if (frame_.size() < 4 || frame_.size() < frame_[3] + kAround) return std::nullopt;
    const Bytes whole = std::exchange(frame_, {});
    const auto end = whole.size() - 2;
    if ((whole[end] << 8 | whole[end + 1]) != frameCrc(whole.data() + 1, end - 1)) {
        ++badFrames_;
        return std::nullopt;
    }
    return Request{whole[1], whole[2], Bytes(whole.begin() + 4, whole.end() - 2)};
}

}  // namespace corvane::models
