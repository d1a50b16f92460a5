#include "platform/ProfileFile.h"

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kLongestValue = 1023;

bool opensSection(std::string_view line, std::string_view section) {
    const auto end = line.find(']');
    return end != std::string_view::npos && equalsNoCase(trimmed(line.substr(1, end - 1)), section);
}

std::string_view withoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

std::string_view findValue(std::string_view content, std::string_view section, std::string_view key) {
    bool inside = false;
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == ';') continue;
        if (line.front() == '[') {
            if (inside) return {};
            inside = opensSection(line, section);
            continue;
        }
        const auto equals = line.find('=');
        if (inside && equals != std::string_view::npos && equalsNoCase(trimmed(line.substr(0, equals)), key)) {
            return withoutQuotes(trimmed(line.substr(equals + 1)));
        }
    }
    return {};
}

}  // namespace

std::string IniProfile::value(std::string_view section, std::string_view key, const std::string& path) {
    std::string content;
    try {
        content = readFile(path);
    } catch (const RuntimeError&) {
        return {};
    }
    std::string_view view = content;
    if (view.substr(0, 3) == "\xEF\xBB\xBF") view.remove_prefix(3);
    return std::string(findValue(view, section, key).substr(0, kLongestValue));
}

}  // namespace corvane
