#include "text/Number.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The length of the number that stands at the front of a text without leading blanks; 0 when there is none.
std::size_t numberLength(std::string_view text) {
    std::size_t at = 0;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    std::size_t digits = 0;
    bool point = false;
    for (; at < text.size(); ++at) {
        if (isDigit(text[at])) {
            ++digits;
        } else if (text[at] == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    return digits ? at : 0;
}

template <typename Whole>
Whole rounded(double value) {
    const double whole = roundToEven(value);
    if (!(whole >= std::numeric_limits<Whole>::min() && whole <= std::numeric_limits<Whole>::max())) {
        throw RuntimeError::overflow();
    }
    return static_cast<Whole>(whole);
}

}  // namespace

double leadingNumber(std::string_view text) {
    text = trimmed(text);
    text = text.substr(0, numberLength(text));
    if (text.empty()) return 0;
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec == std::errc::result_out_of_range) value = HUGE_VAL;
    return negative ? -value : value;
}

bool isNumeric(std::string_view text) {
    text = trimmed(text);
    return !text.empty() && numberLength(text) == text.size();
}

double roundToEven(double value) { return value - std::remainder(value, 1.0); }

std::int32_t toLong(double value) { return rounded<std::int32_t>(value); }
std::int16_t toInteger(double value) { return rounded<std::int16_t>(value); }

std::optional<std::uint32_t> hexNumber(std::string_view digits) {
    if (digits.empty() || digits.size() > 8) return std::nullopt;
    std::uint32_t value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) return std::nullopt;
    return value;
}

std::string byteCount(std::int64_t bytes) {
    constexpr std::int64_t kMiB = 1 << 20;
    return bytes > 0 && bytes % kMiB == 0 ? std::to_string(bytes / kMiB) + " MiB" : std::to_string(bytes) + " bytes";
}

}  // namespace corvane
