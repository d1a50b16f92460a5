#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace corvane {

using Bytes = std::vector<std::uint8_t>;

/// A value whose type is part of the message: nothing, bytes, one byte, 16 or 32 bits (signed), or an 8-bit text.
using Variant = std::variant<std::monostate, Bytes, std::uint8_t, std::int16_t, std::int32_t, std::string>;

/// The bytes of a byte array or a text, one for each 8-bit character; none for any other type.
Bytes bytesOf(const Variant& value);

/// The same as a text.
std::string textOf(const Variant& value);

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }
inline std::string textOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace corvane
