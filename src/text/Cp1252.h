#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// Devices and sites write Windows-1252; people and files of this system read UTF-8. The five codes that Windows-1252
/// leaves open stand for the control characters of the same number, so that any bytes survive the way there and back.
std::string toUtf8(std::string_view text1252);

/// A character that Windows-1252 does not have becomes "?", and so does each byte that is not UTF-8.
std::string fromUtf8(std::string_view utf8);

/// The text as it is, but for bytes that are not UTF-8 (a path may hold some): each becomes U+FFFD.
std::string soundUtf8(std::string_view bytes);

/// With a blank for every control character (line ends and tabs are some), but for those that are to be kept. A text of
/// a device or a site so stays what it is wherever it is shown: a terminal, a viewer of logs, whoever reads a JSON
/// text.
std::string withoutControls(std::string_view utf8, std::string_view kept = {});

}  // namespace corvane
