#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// A UTF-8 text as a JSON string with its quotes; control characters are escaped, and what is not UTF-8 becomes U+FFFD.
std::string jsonString(std::string_view utf8);

}  // namespace corvane
