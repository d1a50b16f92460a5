#include "platform/serial/SettingsText.h"

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

std::optional<CommState> parseSettingsText(std::string_view text) {
    const auto fields = split(text, ',');
    if (fields.size() != 4) return std::nullopt;
    const double rate = roundToEven(leadingNumber(fields[0]));
    const auto letter = upperCase(trimmed(fields[1]));
    const auto parity = std::string_view("NOEMS").find(letter);
    const double dataBits = leadingNumber(fields[2]);
    const double stopBits = leadingNumber(fields[3]);
    if (rate < 1 || rate > 4294967295.0) return std::nullopt;
    if (letter.size() != 1 || parity == std::string_view::npos) return std::nullopt;
    if (dataBits < 4 || dataBits > 8 || dataBits != roundToEven(dataBits)) return std::nullopt;
    if (stopBits != 1 && stopBits != 1.5 && stopBits != 2) return std::nullopt;
    CommState state;
    state.baudRate = static_cast<std::uint32_t>(rate);
    state.parity = static_cast<std::uint8_t>(parity);
    state.dataBits = static_cast<std::uint8_t>(dataBits);
    state.stopBits = static_cast<std::uint8_t>((stopBits - 1) * 2);
    return state;
}

}  // namespace corvane
