#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// Without the blanks (spaces and tabs) at both ends. The view points into the text that was given.
std::string_view trimmed(std::string_view text);

/// Without the UTF-8 mark that some editors put in front of a file. The view points into the text that was given.
std::string_view withoutUtf8Mark(std::string_view text);

/// A to Z folded, everything else as it is; so "any case" means the same everywhere in this program.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
bool equalsNoCase(std::string_view a, std::string_view b);
bool startsWithNoCase(std::string_view text, std::string_view start);

/// Where a text stands in another one at or after a position, without regard to case; npos when it does not.
std::size_t findNoCase(std::string_view text, std::string_view wanted, std::size_t from = 0);
inline bool containsNoCase(std::string_view text, std::string_view wanted) {
    return findNoCase(text, wanted) != std::string_view::npos;
}

/// The pieces between separators; an empty text is one empty piece.
std::vector<std::string> split(std::string_view text, char separator);
std::string joined(const std::vector<std::string>& pieces, std::string_view separator);
std::string replaceAll(std::string text, std::string_view old, std::string_view with);

/// The name at a path's end: what stands behind its last separator, and the whole path when there is none.
std::string lastPart(std::string_view path, char separator = '/');

/// With a blank for every control character, so that somebody else's text stays where it is shown.
std::string onOneLine(std::string text);

/// The lines of a text one by one; LF, CR LF or CR ends a line, the last one needs no end.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {}

    /// False at the end, with the line untouched. The view points into the text that was given.
    bool next(std::string_view& line);

private:
    std::string_view rest_;
};

/// A whole file as bytes; throws RuntimeError "File not found" when it cannot be read (a folder and a pipe cannot).
std::string readFile(const std::string& path);

}  // namespace corvane
