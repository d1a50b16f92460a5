#include "text/Profile.h"

#include <optional>
#include <utility>

#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kLongestValue = 1023;

/// The name in a line that begins with "["; nothing when it does not end.
std::optional<std::string> nameIn(std::string_view head) {
    const auto end = head.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    return upperCase(trimmed(head.substr(1, end - 1)));
}

std::string_view withoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

Profile::Profile(std::string content) : content_(std::move(content)) {
    const std::string_view whole = content_;
    std::optional<std::string> name;
    std::size_t start = 0;
    const auto close = [&](std::size_t end) {
        if (name) sections_.emplace(*name, Place{start, end - start});
    };
    std::string_view line;
    for (Lines lines(withoutUtf8Mark(whole)); lines.next(line);) {
        const auto head = trimmed(line);
        if (head.empty() || head.front() != '[') continue;
        const auto at = static_cast<std::size_t>(line.data() - whole.data());
        close(at);
        name = nameIn(head);
        start = at + line.size();
    }
    close(whole.size());
}

std::string Profile::value(std::string_view section, std::string_view key) const {
    const auto found = sections_.find(upperCase(section));
    if (found == sections_.end()) return {};
    std::string_view line;
    for (Lines lines(std::string_view(content_).substr(found->second.start, found->second.length)); lines.next(line);) {
        line = trimmed(line);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || line.front() == ';') continue;
        if (!equalsNoCase(trimmed(line.substr(0, equals)), key)) continue;
        return std::string(withoutQuotes(trimmed(line.substr(equals + 1))).substr(0, kLongestValue));
    }
    return {};
}

std::string infValue(const Profile& profile, std::string_view section, std::string_view key,
                     std::string_view byDefault) {
    const auto value = profile.value(section, key);
    if (value.empty()) return std::string(byDefault);
    return replaceAll(replaceAll(value, "\\n", "\r\n"), "\\0", std::string_view("\0", 1));
}

}  // namespace corvane
