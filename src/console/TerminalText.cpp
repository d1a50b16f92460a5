#include "console/TerminalText.h"

namespace corvane {
namespace {

bool isControl(unsigned char code) { return (code < 0x20 && code != '\n' && code != '\t') || code == 0x7F; }

/// The second half of a character from U+0080 to U+009F, which a terminal obeys like an escape sequence.
bool isUpperControl(unsigned char lead, unsigned char next) { return lead == 0xC2 && next >= 0x80 && next < 0xA0; }

std::string harmless(const std::string& text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto code = static_cast<unsigned char>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : '\0';
        if (isUpperControl(code, next)) {
            shown += '?';
            ++at;
        } else {
            shown += isControl(code) ? '?' : text[at];
        }
    }
    return shown;
}

}  // namespace

void writeHarmless(TextSink& sink, const std::string& text) { sink.write(sink.isTerminal() ? harmless(text) : text); }

}  // namespace corvane
