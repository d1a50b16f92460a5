#pragma once

#include <map>
#include <string>
#include <string_view>

namespace corvane {

/// Reads values out of files of sections and keys.
class ProfileFile {
public:
    virtual ~ProfileFile() = default;

    /// The value of a key, 1023 characters of it at most; empty when the file, the section, the key or the value is
    /// missing. Sections and keys are found without regard to case, the first one of a name counts.
    virtual std::string value(std::string_view section, std::string_view key, const std::string& path) = 0;
};

/// The real one. A section reaches up to the next line that begins with "["; a line that begins with ";" is a comment;
/// blanks are trimmed and one enclosing pair of quotes, ' or ", is removed; a leading UTF-8 mark is skipped.
class IniProfile : public ProfileFile {
public:
    std::string value(std::string_view section, std::string_view key, const std::string& path) override;
};

/// A file's content in memory, for whoever wants many values of it; read as IniProfile reads. It does not own the
/// content, which lives longer.
class ProfileText {
public:
    explicit ProfileText(std::string_view content);
    std::string value(std::string_view section, std::string_view key) const;

private:
    std::map<std::string, std::string_view> sections_;  // the lines of each, by its name in upper case
};

}  // namespace corvane
