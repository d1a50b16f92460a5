#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

/// The USB vendor ID of the maker's own readers, and their product ID.
extern const std::int32_t MakerVendorID;
inline constexpr std::int32_t kReaderProductId = 5;
inline constexpr std::int32_t kAnyProductId = -1;

/// The last four upper-case hexadecimal digits of the identifier plus 0x10000; throws RuntimeError overflow when that
/// sum is no 32-bit number.
std::string hexIdentifier(std::int32_t id);

/// The number that "0x0ABC", "&H0ABC" or "0ABC" begins with, 0 when it begins with none; throws RuntimeError overflow
/// beyond 32 bits.
std::int32_t identifierFromHex(std::string_view text);

/// True when a port name is the prefix and a number from 1 to 256, or a device path of the maker's reader.
bool isHidPortName(std::string_view name, std::string_view prefix);

}  // namespace corvane
