#include "console/TerminalText.h"

#include "text/Cp1252.h"

namespace corvane {

void writeHarmless(TextSink& sink, const std::string& text) { sink.write(withoutControls(text, "\n\t")); }

}  // namespace corvane
