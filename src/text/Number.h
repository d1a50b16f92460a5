#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// The number that a text begins with (blanks, a sign, digits, a fraction); 0 when it begins with none.
double leadingNumber(std::string_view text);

/// True when the whole text is a number: optional blanks, sign, digits with at most one point, blanks.
bool isNumeric(std::string_view text);

/// The nearest whole number, a half going to the even neighbour.
double roundToEven(double value);

/// Rounded to even and cut to the type; throws RuntimeError overflow when it does not fit.
std::int32_t toLong(double value);
std::int16_t toInteger(double value);

/// The value of a text of hexadecimal digits only (either case, at most 8); nothing for any other text.
std::optional<std::uint32_t> hexNumber(std::string_view digits);

/// "64 MiB" where it is as many, else "3000 bytes".
std::string byteCount(std::int64_t bytes);

}  // namespace corvane
