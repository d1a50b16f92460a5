#pragma once

#include <map>
#include <string>
#include <string_view>

namespace corvane {

/// Settings by "group/key" ("key" alone before the first group).
using RawSettings = std::map<std::string, std::string>;

/// The settings file's text: "[group]" lines, and "key=value" lines whose value is taken as it is written, commas,
/// semicolons, backslashes and quotes included, without the blanks at its ends. Only a value that is one whole text in
/// double quotes, with \\, \", \n and \r in it and no other backslash, is what those stand for. Lines that begin with
/// ";" or "#", and those without "=", are comments.
RawSettings readRawIni(std::string_view text);

/// A value is quoted only when it could not be read back otherwise: blanks or double quotes at its ends, line ends in
/// it.
std::string writeRawIni(const RawSettings& settings);

}  // namespace corvane
