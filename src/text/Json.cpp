#include "text/Json.h"

#include <cstdio>

#include "text/Cp1252.h"

namespace corvane {

std::string jsonString(std::string_view utf8) {
    std::string out = "\"";
    for (const char c : soundUtf8(utf8)) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
            out += escape;
        } else {
            out += c;
        }
    }
    return out + '"';
}

}  // namespace corvane
