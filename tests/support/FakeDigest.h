#pragma once

#include <cstdio>
#include <functional>

#include "platform/Digest.h"

namespace corvane::fakes {

/// 64 digits that differ where contents do, and that no cryptographer should look at.
class FakeDigest : public Digest {
public:
    std::string sha256(std::string_view content) override {
        const auto value = std::hash<std::string_view>()(content);
        char digits[65];
        std::snprintf(digits, sizeof digits, "%016zx%016zx%016zx%016zx", value, value * 31, value * 37, value * 41);
        return digits;
    }
};

}  // namespace corvane::fakes
