#pragma once

#include <optional>
#include <string_view>

#include "platform/SerialControl.h"

namespace corvane {

/// The line settings that a text of four fields names: rate (above 0, read by its leading number), parity letter in
/// either case, 4 to 8 data bits, 1, 1.5 or 2 stop bits. Nothing when a field is wrong.
std::optional<CommState> parseSettingsText(std::string_view text);

}  // namespace corvane
