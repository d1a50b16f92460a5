#include "text/Json.h"

#include "text/Cp1252.h"

namespace corvane {

std::string jsonString(std::string_view utf8) {
    std::string out = "\"";
    for (const char c : withoutControls(soundUtf8(utf8), "\n")) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else {
            out += c;
        }
    }
    return out + '"';
}

}  // namespace corvane
