#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace corvane::fuzz {

/// Ends the process with a word about what is wrong.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

/// Bytes that are used up one after the other; beyond the end there are zeros.
class Input {
public:
    explicit Input(std::string_view bytes) : rest_(bytes) {}

    bool isEmpty() const { return rest_.empty(); }

    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    /// Up to the next such character, which is left out, or to the end.
    std::string_view upTo(char end) {
        const auto at = rest_.find(end);
        const auto text = rest_.substr(0, at);
        rest_.remove_prefix(at == std::string_view::npos ? rest_.size() : at + 1);
        return text;
    }

private:
    std::string_view rest_;
};

}  // namespace corvane::fuzz
