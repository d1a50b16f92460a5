#include "protocol/Frame.h"

#include <algorithm>

#include "text/RuntimeError.h"

namespace corvane {
namespace {

constexpr auto kStart = ReplyFrame::kStart;
constexpr std::int32_t kCrcPreset = 0xFFFF;
constexpr std::size_t kMostParameters = 255;

template <typename Number>
Bytes mostSignificantFirst(Number number) {
    const auto value = static_cast<std::uint32_t>(number);
    Bytes bytes;
    for (int shift = 8 * (static_cast<int>(sizeof number) - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return bytes;
}

Bytes parameterBytes(const Variant& parameter) {
    if (const auto* bytes = std::get_if<Bytes>(&parameter)) return *bytes;
    if (const auto* byte = std::get_if<std::uint8_t>(&parameter)) return {*byte};
    if (const auto* integer = std::get_if<std::int16_t>(&parameter)) return mostSignificantFirst(*integer);
    if (const auto* number = std::get_if<std::int32_t>(&parameter)) return mostSignificantFirst(*number);
    return {};
}

std::uint32_t leadingBytes(const Bytes& data, std::size_t most) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < std::min(data.size(), most); ++i) value = value << 8 | data[i];
    return value;
}

}  // namespace

std::int32_t TarnPlusCRC16(const Bytes& pbBuffer, std::int32_t lStart, std::int32_t lSize, std::int32_t lCRCPreset) {
    if (lSize < 1) return lCRCPreset;
    if (lStart < 0 || lStart > BytesSize(pbBuffer) - lSize) throw RuntimeError::subscriptOutOfRange();
    auto crc = static_cast<std::uint32_t>(lCRCPreset);
    for (std::int32_t i = lStart; i < lStart + lSize; ++i) {
        crc ^= pbBuffer[static_cast<std::size_t>(i)];
        for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    return static_cast<std::int32_t>(crc);
}

std::int32_t BytesSize(const Bytes& bytes) { return static_cast<std::int32_t>(bytes.size()); }

std::optional<Bytes> requestFrame(std::uint8_t machine, std::uint8_t function, const Variant& parameter) {
    const Bytes parameters = parameterBytes(parameter);
    if (parameters.size() > kMostParameters) return std::nullopt;
    Bytes frame = {kStart, machine, function, static_cast<std::uint8_t>(parameters.size())};
    frame.insert(frame.end(), parameters.begin(), parameters.end());
    const auto crc = TarnPlusCRC16(frame, 1, BytesSize(parameters) + 3, kCrcPreset);
    frame.push_back(static_cast<std::uint8_t>(crc >> 8));
    frame.push_back(static_cast<std::uint8_t>(crc));
    return frame;
}

bool ReplyFrame::take(const Bytes& received) {
    for (const auto byte : received) {
        if (bytes_.empty() && byte != kStart) continue;
        bytes_.push_back(byte);
        if (isComplete()) return true;
    }
    return false;
}

bool ReplyFrame::isCrcRight() const {
    const auto crc = TarnPlusCRC16(bytes_, 1, BytesSize(bytes_) - 3, kCrcPreset);
    return crc == bytes_[bytes_.size() - 2] * 256 + bytes_.back();
}

void resetReply(Variant& reply) {
    if (auto* bytes = std::get_if<Bytes>(&reply)) bytes->clear();
    if (auto* byte = std::get_if<std::uint8_t>(&reply)) *byte = 0;
    if (auto* integer = std::get_if<std::int16_t>(&reply)) *integer = 0;
    if (auto* number = std::get_if<std::int32_t>(&reply)) *number = 0;
}

void convertReply(const Bytes& data, Variant& reply) {
    if (data.empty()) return;
    if (auto* bytes = std::get_if<Bytes>(&reply)) *bytes = data;
    if (auto* byte = std::get_if<std::uint8_t>(&reply)) *byte = data.front();
    if (auto* integer = std::get_if<std::int16_t>(&reply)) *integer = static_cast<std::int16_t>(leadingBytes(data, 2));
    if (auto* number = std::get_if<std::int32_t>(&reply)) *number = static_cast<std::int32_t>(leadingBytes(data, 4));
}

}  // namespace corvane
