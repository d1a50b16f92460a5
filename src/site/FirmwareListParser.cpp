#include "site/FirmwareListParser.h"

#include "text/Text.h"

namespace corvane {
namespace {

/// A ";" cuts a line only when it stands before the first "=": a value may hold one, and so may a line without "=".
std::string_view withoutComment(std::string_view line) {
    const auto equals = line.find('=');
    const auto semicolon = line.find(';');
    const bool cut = equals != std::string_view::npos && semicolon != std::string_view::npos && semicolon < equals;
    return cut ? line.substr(0, semicolon) : line;
}

}  // namespace

std::vector<FirmwareRecord> FirmwareListParser::parse(std::string_view content) {
    records_.clear();
    current_ = {};
    inside_ = false;
    seen_ = carried_ = 0;
    std::string_view line;
    for (Lines lines(withoutUtf8Mark(content)); lines.next(line);) takeLine(line);
    takeLine("[End]");
    return std::move(records_);
}

void FirmwareListParser::takeLine(std::string_view line) {
    line = trimmed(withoutComment(line));
    if (line.empty() || line.front() != '[') {
        if (inside_) takeKey(line);
        return;
    }
    closeSection();
    if (line.back() != ']') return;
    current_.section = line.substr(1, line.size() - 2);
    inside_ = startsWithNoCase(current_.section, "PGM");
}

void FirmwareListParser::takeKey(std::string_view line) {
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) return;
    const auto key = upperCase(trimmed(line.substr(0, equals)));
    const auto value = trimmed(line.substr(equals + 1));
    const auto store = [&](std::string& field, Key bit) {
        field = value;
        seen_ |= bit;
        carried_ &= ~static_cast<unsigned>(bit);
    };
    if (key == "PRODUCT") store(current_.product, kProduct);
    if (key == "VERSION") store(current_.version, kVersion);
    if (key == "DESC") store(current_.description, kDesc);
    if (key == "FILE") store(current_.file, kFile);
}

void FirmwareListParser::closeSection() {
    const bool complete = seen_ == kAllKeys;
    if (inside_ && onSection) onSection(current_.section, seen_, carried_);
    inside_ = false;
    if (complete) {
        seen_ = 0;
        records_.push_back(current_);
    }
    carried_ = seen_;
}

}  // namespace corvane
