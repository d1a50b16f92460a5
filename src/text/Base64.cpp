#include "text/Base64.h"

#include <cstdint>

namespace corvane {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::optional<std::string> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    const auto length = text.size() - (text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0);
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned held = 0;
    for (const char c : text.substr(0, length)) {
        const auto digit = kDigits.find(c);
        if (digit == std::string_view::npos) return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        held += 6;
        if (held < 8) continue;
        held -= 8;
        bytes += static_cast<char>(bits >> held);
        bits &= (1U << held) - 1;
    }
    if (bits != 0) return std::nullopt;
    return bytes;
}

}  // namespace corvane
