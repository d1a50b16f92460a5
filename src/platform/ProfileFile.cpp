#include "platform/ProfileFile.h"

#include <optional>

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kLongestValue = 1023;

/// The name in a line that begins with "["; nothing when it does not end.
std::optional<std::string_view> nameIn(std::string_view head) {
    const auto end = head.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    return trimmed(head.substr(1, end - 1));
}

std::string_view withoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

/// Calls take with the name and the lines of each section, in the file's order, as long as it is True.
template <class Take>
void eachSection(std::string_view content, Take take) {
    content = withoutUtf8Mark(content);
    std::optional<std::string_view> name;
    std::size_t start = 0;
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        const auto head = trimmed(line);
        if (head.empty() || head.front() != '[') continue;
        const auto at = static_cast<std::size_t>(line.data() - content.data());
        if (name && !take(*name, content.substr(start, at - start))) return;
        name = nameIn(head);
        start = at + line.size();
    }
    if (name) take(*name, content.substr(start));
}

/// The first value of that key among a section's lines.
std::string valueIn(std::string_view section, std::string_view key) {
    std::string_view line;
    for (Lines lines(section); lines.next(line);) {
        line = trimmed(line);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || line.front() == ';') continue;
        if (!equalsNoCase(trimmed(line.substr(0, equals)), key)) continue;
        return std::string(withoutQuotes(trimmed(line.substr(equals + 1))).substr(0, kLongestValue));
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
    std::string value;
    eachSection(content, [&](std::string_view name, std::string_view lines) {
        const bool isIt = equalsNoCase(name, section);
        if (isIt) value = valueIn(lines, key);
        return !isIt;
    });
    return value;
}

ProfileText::ProfileText(std::string_view content) {
    eachSection(content, [this](std::string_view name, std::string_view lines) {
        sections_.emplace(upperCase(name), lines);
        return true;
    });
}

std::string ProfileText::value(std::string_view section, std::string_view key) const {
    const auto found = sections_.find(upperCase(section));
    return found == sections_.end() ? std::string() : valueIn(found->second, key);
}

}  // namespace corvane
