#include "text/SettingsText.h"

#include <iterator>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::string_view kParities = "NOEMS";  // in the order of their values
constexpr const char* kStopBits[] = {"1", "1.5", "2"};

/// npos when the text is no parity letter.
std::size_t parityOf(std::string_view text) {
    return text.size() == 1 ? kParities.find(upperCase(text)) : std::string_view::npos;
}

bool isStopBits(double value) { return value == 1 || value == 1.5 || value == 2; }

}  // namespace

std::optional<CommState> parseSettingsText(std::string_view text) {
    const auto fields = split(text, ',');
    if (fields.size() != 4) return std::nullopt;
    const double rate = roundToEven(leadingNumber(fields[0]));
    const auto parity = parityOf(fields[1]);
    const double dataBits = roundToEven(leadingNumber(fields[2]));
    const double stopBits = leadingNumber(fields[3]);
    if (!(rate >= 0 && rate <= 4294967295.0) || parity == std::string_view::npos) return std::nullopt;
    if (!(dataBits >= 4 && dataBits <= 8) || !isStopBits(stopBits)) return std::nullopt;
    CommState state;
    state.baudRate = static_cast<std::uint32_t>(rate);
    state.parity = static_cast<std::uint8_t>(parity);
    state.dataBits = static_cast<std::uint8_t>(dataBits);
    state.stopBits = static_cast<std::uint8_t>((stopBits - 1) * 2);
    return state;
}

std::optional<std::string> settingsTextOf(const CommState& state) {
    if (state.parity >= kParities.size() || state.dataBits < 4 || state.dataBits > 8) return std::nullopt;
    if (state.stopBits >= std::size(kStopBits)) return std::nullopt;
    return std::to_string(state.baudRate) + "," + kParities[state.parity] + "," + std::to_string(state.dataBits) + "," +
           kStopBits[state.stopBits];
}

SettingsField settingsFieldOf(std::string_view piece) {
    const double value = leadingNumber(piece);
    if (value == 0) {
        return parityOf(piece) != std::string_view::npos ? SettingsField::parity : SettingsField::none;
    }
    if (isStopBits(value)) return SettingsField::stopBits;
    const bool isDataBits = value >= 4 && value <= 8 && value == roundToEven(value);
    return isDataBits ? SettingsField::dataBits : SettingsField::rate;
}

}  // namespace corvane
