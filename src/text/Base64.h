#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// The bytes that a base64 text stands for; nothing when it is none. Strict: each byte string has one spelling, with
/// its padding and without blanks.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace corvane
