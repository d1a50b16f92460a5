#include "platform/RawIni.h"

#include <optional>

#include "text/Text.h"

namespace corvane {
namespace {

/// The character that an escape stands for, by the letter behind its backslash; nothing for an unknown one.
std::optional<char> unescaped(char c) {
    switch (c) {
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case '\\':
        case '"':
            return c;
        default:
            return std::nullopt;
    }
}

/// What a text in double quotes means; nothing when it is not exactly one.
std::optional<std::string> unquoted(std::string_view value) {
    if (value.size() < 2 || value.front() != '"' || value.back() != '"') return std::nullopt;
    value = value.substr(1, value.size() - 2);
    std::string meant;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] == '"') return std::nullopt;
        if (value[at] != '\\') {
            meant += value[at];
            continue;
        }
        const auto c = ++at < value.size() ? unescaped(value[at]) : std::nullopt;
        if (!c) return std::nullopt;
        meant += *c;
    }
    return meant;
}

bool needsQuotes(std::string_view value) {
    if (value.empty()) return false;
    const std::string_view atEnds = " \t\"";
    return atEnds.find(value.front()) != std::string_view::npos ||
           atEnds.find(value.back()) != std::string_view::npos || value.find_first_of("\r\n") != std::string_view::npos;
}

std::string quoted(const std::string& value) {
    auto text = replaceAll(replaceAll(value, "\\", "\\\\"), "\"", "\\\"");
    text = replaceAll(replaceAll(std::move(text), "\n", "\\n"), "\r", "\\r");
    return '"' + text + '"';
}

}  // namespace

RawSettings readRawIni(std::string_view text) {
    RawSettings settings;
    std::string group;
    std::string_view line;
    for (Lines lines(withoutUtf8Mark(text)); lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == ';' || line.front() == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            group = std::string(trimmed(line.substr(1, line.size() - 2))) + "/";
            continue;
        }
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const auto value = trimmed(line.substr(equals + 1));
        settings[group + std::string(trimmed(line.substr(0, equals)))] = unquoted(value).value_or(std::string(value));
    }
    return settings;
}

std::string writeRawIni(const RawSettings& settings) {
    std::string head;
    std::map<std::string, std::string> groups;
    for (const auto& [name, value] : settings) {
        const auto slash = name.find('/');
        auto& lines = slash == std::string::npos ? head : groups[name.substr(0, slash)];
        lines += name.substr(slash == std::string::npos ? 0 : slash + 1) + "=" +
                 (needsQuotes(value) ? quoted(value) : value) + "\n";
    }
    std::string text = head;
    for (const auto& [group, lines] : groups) text += (text.empty() ? "[" : "\n[") + group + "]\n" + lines;
    return text;
}

}  // namespace corvane
