#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "text/Variant.h"

namespace corvane {

/// One Intel HEX record, ":" LL AAAA TT data CC, taken apart.
struct HexRecord {
    std::uint16_t address = 0;
    std::uint8_t type = 0;  ///< 0 data, 1 end, 2 segment, 3 and 5 start address, 4 upper 16 bits of the address
    Bytes data;
    bool checksumRight = false;
};

/// Why a line is no record; none when it is one.
enum class HexFault { none, noColon, notHexadecimal, truncated, tooLong };

/// The record that a line holds; nothing when the line is none, with the reason. A wrong checksum is no such reason.
std::optional<HexRecord> parseHexRecord(std::string_view line, HexFault* fault = nullptr);

}  // namespace corvane
