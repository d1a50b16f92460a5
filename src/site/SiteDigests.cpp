#include "site/SiteDigests.h"

#include "text/Text.h"

namespace corvane {
namespace {

/// The key of a line in upper case, and where its value begins; empty when the line is none.
std::string keyOf(std::string_view line, std::string_view& value) {
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || trimmed(line).front() == ';') return {};
    value = trimmed(line.substr(equals + 1));
    return upperCase(trimmed(line.substr(0, equals)));
}

/// Collects one section's lines, then writes them with the digest.
class Section {
public:
    void add(std::string_view line, std::string_view end) { lines_.push_back({std::string(line), std::string(end)}); }

    std::string text(const std::function<std::string(const std::string&)>& digestOf) const {
        const auto digest = isImage() ? digestOf(path()) : std::string();
        if (digest.empty()) return plain();
        std::string text;
        for (const auto& line : lines_) {
            std::string_view value;
            const auto key = keyOf(line.text, value);
            if (key == "SHA256") {
                text += "SHA256=" + digest + line.end;
                continue;
            }
            text += line.text + line.end;
            if (key != "FILE" || has("SHA256")) continue;
            const auto end = line.end.empty() ? std::string("\n") : line.end;
            text += (line.end.empty() ? end : "") + "SHA256=" + digest + end;
        }
        return text;
    }

private:
    struct Line {
        std::string text, end;
    };

    bool isImage() const {
        return !lines_.empty() && startsWithNoCase(trimmed(lines_.front().text), "[PGM") && has("FILE");
    }

    bool has(const std::string& wanted) const { return !valueLine(wanted).empty(); }

    std::string valueLine(const std::string& wanted) const {
        std::string_view value;
        for (const auto& line : lines_) {
            if (keyOf(line.text, value) == wanted) return line.text;
        }
        return {};
    }

    std::string path() const {
        const auto line = valueLine("FILE");
        std::string_view value;
        keyOf(line, value);
        return value.substr(0, 1) == "/" ? std::string(value) : "/" + std::string(value);
    }

    std::string plain() const {
        std::string text;
        for (const auto& line : lines_) text += line.text + line.end;
        return text;
    }

    std::vector<Line> lines_;
};

}  // namespace

std::string withDigests(std::string_view content, const std::function<std::string(const std::string& path)>& digestOf) {
    std::string text;
    Section section;
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        const auto at = static_cast<std::size_t>(line.data() - content.data()) + line.size();
        const auto ending = content.substr(at, content.substr(at, 2) == "\r\n" ? 2 : 1);
        if (trimmed(line).substr(0, 1) == "[") {
            text += section.text(digestOf);
            section = {};
        }
        section.add(line, ending);
    }
    return text + section.text(digestOf);
}

}  // namespace corvane
