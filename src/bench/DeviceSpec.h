#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "models/Device.h"
#include "models/HidReader.h"

namespace corvane::bench {

/// One simulated device and the port it sits on.
struct DeviceSpec {
    int port = 0;           ///< the N of COMn, 1 to 256, or of HIDn; 0: the lowest one that is free
    bool isReader = false;  ///< behind a HID reader, not on a serial port
    models::DeviceOptions device;
    models::HidReaderOptions reader;
    std::optional<int> replugMs;  ///< after it was unplugged it comes back so much later
};

/// "kind=TarnPlus,port=3,baud=19200,fault=nak@5x2,…": keys and values between commas, each key once but "fault"; "\,"
/// is a comma in a value and "\\" a backslash. The text is UTF-8. Throws std::invalid_argument with what is wrong.
DeviceSpec deviceSpec(std::string_view text);

/// Each key with what it means, a line each.
std::string deviceSpecHelp();

}  // namespace corvane::bench
