#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// Digests of files, to compare them by.
class Digest {
public:
    virtual ~Digest() = default;

    /// SHA-256 as 64 lower-case hexadecimal digits.
    virtual std::string sha256(std::string_view content) = 0;
};

}  // namespace corvane
