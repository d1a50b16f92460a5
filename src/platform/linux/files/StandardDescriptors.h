#pragma once

namespace corvane {

/// Puts /dev/null in the place of standard input, output and error where a program was started without them. What it
/// opened first, a serial port say, would otherwise take their numbers, and a warning would be sent to the device. For
/// the very beginning of a program.
void fillStandardDescriptors();

}  // namespace corvane
