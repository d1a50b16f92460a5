#pragma once

#include <string>

#include "platform/TextSink.h"

namespace corvane {

/// Writes text (UTF-8) that a device, a site or a file may have had a hand in. A terminal must not take commands from
/// it, not even later from a file, so control characters other than line ends and tabs become blanks.
void writeHarmless(TextSink& sink, const std::string& text);

}  // namespace corvane
