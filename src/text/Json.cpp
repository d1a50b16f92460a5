#include "text/Json.h"

#include <cstdint>
#include <cstdio>

#include "text/Cp1252.h"

namespace corvane {
namespace {

std::string escaped(unsigned code) {
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04X", code);
    return text;
}

}  // namespace

std::string jsonString(std::string_view utf8) {
    std::string out = "\"";
    const auto text = soundUtf8(utf8);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto code = static_cast<std::uint8_t>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<std::uint8_t>(text[at + 1]) : std::uint8_t{0};
        if (code == '"' || code == '\\') {
            out += '\\';
            out += text[at];
        } else if (code == '\n') {
            out += "\\n";
        } else if (code < 0x20 || code == 0x7F) {
            out += escaped(code);
        } else if (code == 0xC2 && next < 0xA0) {
            out += escaped(next);  // U+0080 to U+009F, which a terminal would obey
            ++at;
        } else {
            out += text[at];
        }
    }
    return out + '"';
}

}  // namespace corvane
