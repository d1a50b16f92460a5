#pragma once

#include <map>
#include <string>
#include <string_view>

namespace corvane {

/// A text of sections and keys, taken apart once. Sections and keys are found without regard to case, and the first one
/// of a name counts. A section reaches up to the next line that begins with "["; a line that begins with ";" is a
/// comment; blanks are trimmed and one enclosing pair of quotes, ' or ", is removed; a leading UTF-8 mark is skipped.
class Profile {
public:
    Profile() = default;
    explicit Profile(std::string content);

    /// The value of a key, 1023 characters of it at most; empty when the section, the key or the value is missing.
    std::string value(std::string_view section, std::string_view key) const;

    const std::string& content() const { return content_; }

private:
    struct Place {
        std::size_t start, length;
    };

    std::string content_;
    std::map<std::string, Place> sections_;  // where the lines of each stand, by its name in upper case
};

/// A value as this program reads it from a profile: "\n" in it stands for a line break and "\0" for a NUL; the default
/// when it is missing or empty.
std::string infValue(const Profile& profile, std::string_view section, std::string_view key,
                     std::string_view byDefault);

}  // namespace corvane
