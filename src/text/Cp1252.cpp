#include "text/Cp1252.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace corvane {
namespace {

constexpr char32_t kBad = 0xFFFFFFFF;

/// The characters of the codes 0x80 to 0x9F.
constexpr std::array<char32_t, 32> kUpper = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                             0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                             0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                             0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void append(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

/// Takes one character off the front; kBad (and one byte taken) when the front is not UTF-8.
char32_t take(std::string_view& utf8) {
    const auto lead = static_cast<std::uint8_t>(utf8.front());
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    char32_t c = length < 2 ? lead : lead & (0x7F >> length);
    bool sound = length != 0 && lead < 0xF5 && utf8.size() >= length;
    for (std::size_t i = 1; sound && i < length; ++i) {
        const auto next = static_cast<std::uint8_t>(utf8[i]);
        sound = (next & 0xC0) == 0x80;
        c = c << 6 | (next & 0x3F);
    }
    constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};  // by length: shorter ones must be used
    sound = sound && c >= kLeast[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    utf8.remove_prefix(sound ? length : 1);
    return sound ? c : kBad;
}

char toCode(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    const auto* at = std::find(kUpper.begin(), kUpper.end(), c);
    return at == kUpper.end() ? '?' : static_cast<char>(0x80 + (at - kUpper.begin()));
}

}  // namespace

std::string toUtf8(std::string_view text1252) {
    std::string out;
    out.reserve(text1252.size());
    for (const char c : text1252) {
        const auto code = static_cast<std::uint8_t>(c);
        append(out, code >= 0x80 && code < 0xA0 ? kUpper[code - 0x80] : code);
    }
    return out;
}

std::string fromUtf8(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    while (!utf8.empty()) out += toCode(take(utf8));
    return out;
}

std::string soundUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto before = bytes;
        if (take(bytes) == kBad) {
            append(out, 0xFFFD);
        } else {
            out += before.substr(0, before.size() - bytes.size());
        }
    }
    return out;
}

std::string withoutControls(std::string_view utf8, std::string_view kept) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto code = static_cast<std::uint8_t>(utf8[at]);
        const auto next = at + 1 < utf8.size() ? static_cast<std::uint8_t>(utf8[at + 1]) : std::uint8_t{0};
        const bool isUpper =
            code == 0xC2 && next >= 0x80 && next < 0xA0;  // U+0080 to U+009F, which terminals obey, too
        const bool isControl = (code < 0x20 && kept.find(utf8[at]) == std::string_view::npos) || code == 0x7F;
        out += isControl || isUpper ? ' ' : utf8[at];
        if (isUpper) ++at;
    }
    return out;
}

}  // namespace corvane
