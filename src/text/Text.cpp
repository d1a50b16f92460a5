#include "text/Text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "text/RuntimeError.h"

namespace corvane {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool sameLetter(char a, char b) { return upper(a) == upper(b); }

}  // namespace

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string_view withoutUtf8Mark(std::string_view text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.substr(0, kMark.size()) == kMark ? text.substr(kMark.size()) : text;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), sameLetter);
}

bool startsWithNoCase(std::string_view text, std::string_view start) {
    return equalsNoCase(text.substr(0, start.size()), start);
}

std::size_t findNoCase(std::string_view text, std::string_view wanted, std::size_t from) {
    if (from > text.size()) return std::string_view::npos;
    const auto at = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), wanted.begin(),
                                wanted.end(), sameLetter);
    return at == text.end() && !wanted.empty() ? std::string_view::npos : static_cast<std::size_t>(at - text.begin());
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t start = 0;;) {
        const auto end = text.find(separator, start);
        pieces.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos) return pieces;
        start = end + 1;
    }
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i) result += separator;
        result += pieces[i];
    }
    return result;
}

std::string replaceAll(std::string text, std::string_view old, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += with.size()) {
        text.replace(at, old.size(), with);
    }
    return text;
}

std::string lastPart(std::string_view path, char separator) {
    return std::string(path.substr(path.rfind(separator) + 1));
}

std::string onOneLine(std::string text) {
    const auto isControl = [](unsigned char character) { return character < 0x20 || character == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

bool Lines::next(std::string_view& line) {
    if (rest_.empty()) return false;
    const auto end = rest_.find_first_of("\r\n");
    line = rest_.substr(0, end);
    if (end == std::string_view::npos) {
        rest_ = {};
        return true;
    }
    const bool pair = rest_[end] == '\r' && end + 1 < rest_.size() && rest_[end + 1] == '\n';
    rest_.remove_prefix(end + (pair ? 2 : 1));
    return true;
}

std::string readFile(const std::string& path) {
    std::error_code error;
    // A pipe would wait for somebody to write into it, perhaps for ever.
    if (!std::filesystem::is_regular_file(path, error)) throw RuntimeError::fileNotFound();
    std::ifstream file(path, std::ios::binary);
    if (!file) throw RuntimeError::fileNotFound();
    try {
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    } catch (const std::ios_base::failure&) {  // a medium or a device that is going away
        throw RuntimeError::fileNotFound();
    }
}

}  // namespace corvane
