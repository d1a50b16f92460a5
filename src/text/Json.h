#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// A UTF-8 text as a JSON string with its quotes; a line end is escaped, every other control character is a blank, and
/// what is not UTF-8 becomes U+FFFD.
std::string jsonString(std::string_view utf8);

}  // namespace corvane
