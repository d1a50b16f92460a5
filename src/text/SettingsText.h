#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// The four line settings of a port: bits a second; 0 none, 1 odd, 2 even, 3 mark, 4 space; 4 to 8 data bits; 0, 1, 2
/// for one, one and a half, two stop bits.
struct CommState {
    std::uint32_t baudRate = 0;
    std::uint8_t parity = 0;
    std::uint8_t dataBits = 8;
    std::uint8_t stopBits = 0;

    bool operator==(const CommState&) const = default;
};

/// The settings that a whole text names, "rate,parity letter,data bits,stop bits"; nothing when a field is wrong. A
/// number is what its field begins with, so "57600N" is the rate 57600. Which rates a port has is for it to say; 0
/// is one here.
std::optional<CommState> parseSettingsText(std::string_view text);

/// The same as text; nothing when a value has no name.
std::optional<std::string> settingsTextOf(const CommState& state);

enum class SettingsField { none, rate, parity, dataBits, stopBits };

/// Which field one piece of a text stands for, wherever it stands: no two kinds have a value in common. A 0 is none.
SettingsField settingsFieldOf(std::string_view piece);

}  // namespace corvane
