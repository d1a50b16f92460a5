#include "text/IntelHex.h"

#include "text/Number.h"

namespace corvane {
namespace {

HexFault decode(std::string_view line, Bytes& raw) {
    if (line.empty() || line.front() != ':') return HexFault::noColon;
    const std::string_view digits = line.substr(1);
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        const auto byte = hexNumber(digits.substr(at, 2));
        if (!byte) return HexFault::notHexadecimal;
        raw.push_back(static_cast<std::uint8_t>(*byte));
    }
    if (digits.size() % 2 && !hexNumber(digits.substr(digits.size() - 1))) return HexFault::notHexadecimal;
    if (raw.size() < 5 || raw.size() < raw[0] + 5U) return HexFault::truncated;
    return digits.size() > 2 * (raw[0] + std::size_t{5}) ? HexFault::tooLong : HexFault::none;
}

}  // namespace

std::optional<HexRecord> parseHexRecord(std::string_view line, HexFault* fault) {
    Bytes raw;
    const HexFault found = decode(line, raw);
    if (fault) *fault = found;
    if (found != HexFault::none) return std::nullopt;
    std::uint8_t sum = 0;
    for (const auto byte : raw) sum = static_cast<std::uint8_t>(sum + byte);
    HexRecord record;
    record.address = static_cast<std::uint16_t>(raw[1] << 8 | raw[2]);
    record.type = raw[3];
    record.data.assign(raw.begin() + 4, raw.end() - 1);
    record.checksumRight = sum == 0;
    return record;
}

}  // namespace corvane
