#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace corvane {

/// firmware.inf with a SHA256 key in each section that names an image: in place of the one that is there, or behind
/// FILE. digestOf gives an image's digest by its path from the site's root, and an empty text for one that is missing,
/// whose section stays as it is. Everything else is kept to the letter.
std::string withDigests(std::string_view content, const std::function<std::string(const std::string& path)>& digestOf);

}  // namespace corvane
