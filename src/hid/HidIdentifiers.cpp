#include "hid/HidIdentifiers.h"

#include <cstdio>
#include <limits>

#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

const std::int32_t MakerVendorID = CORVANE_MAKER_VENDOR_ID;

namespace {

constexpr std::int32_t kFourDigits = 0x10000;  // added so that four digits are there
constexpr std::size_t kMostHexDigits = 8;

}  // namespace

std::string hexIdentifier(std::int32_t id) {
    if (id > std::numeric_limits<std::int32_t>::max() - kFourDigits) throw RuntimeError::overflow();
    char digits[16];
    std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned>(id + kFourDigits));
    const std::string text = digits;
    return text.substr(text.size() - std::min<std::size_t>(4, text.size()));
}

std::int32_t identifierFromHex(std::string_view text) {
    if (startsWithNoCase(text, "0X") || startsWithNoCase(text, "&H")) text.remove_prefix(2);
    text = text.substr(0, text.find_first_not_of("0123456789ABCDEFabcdef"));
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.size() > kMostHexDigits) throw RuntimeError::overflow();
    return static_cast<std::int32_t>(hexNumber(text).value_or(0));
}

bool isHidPortName(std::string_view name, std::string_view prefix) {
    if (startsWithNoCase(name, prefix)) {
        const auto rest = name.substr(prefix.size());
        const double number = roundToEven(leadingNumber(rest));
        return isNumeric(rest) && number >= 1 && number <= 256;
    }
    // Device paths are tied to the factory identifiers, whatever the properties say.
    const std::string vendor = hexIdentifier(MakerVendorID);
    const std::string product = hexIdentifier(kReaderProductId);
    std::size_t at = 0;
    for (const std::string_view piece : {std::string_view("\\hid"), std::string_view("vid"), std::string_view(vendor),
                                         std::string_view("pid"), std::string_view(product)}) {
        at = findNoCase(name, piece, at);
        if (at == std::string_view::npos) return false;
        at += piece.size();
    }
    return true;
}

}  // namespace corvane
