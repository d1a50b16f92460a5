#include "console/LogPrinter.h"

#include "console/TerminalText.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string asUtf8Lines(std::string_view logged) { return replaceAll(toUtf8(logged), "\r\n", "\n"); }

}  // namespace

std::string PlainLog::text(std::string_view logged) {
    auto text = withoutControls(asUtf8Lines(logged), "\n");
    if (!text.empty()) isLineOpen_ = text.back() != '\n';
    return text;
}

std::string PlainLog::clearing() {
    const bool wasOpen = isLineOpen_;
    isLineOpen_ = false;
    return wasOpen ? "\n" : "";
}

void LogPrinter::plain(const std::string& text) {
    if (!json_) writeHarmless(out_, text);
    if (copy_) copy_->write(text);
}

void LogPrinter::text(std::string_view logged) {
    plain(plain_.text(logged));
    if (json_) out_.write("{\"event\":\"log\",\"text\":" + jsonString(asUtf8Lines(logged)) + "}\n");
}

void LogPrinter::clear() {
    plain(plain_.clearing());
    if (json_) out_.write("{\"event\":\"clear\"}\n");
}

void LogPrinter::progress(std::int64_t value, std::int64_t maximum) {
    if (!json_) return;
    out_.write("{\"event\":\"progress\",\"value\":" + std::to_string(value) +
               ",\"maximum\":" + std::to_string(maximum) + "}\n");
}

void LogPrinter::verdict(const Verdict& verdict) {
    if (!json_) return;
    out_.write("{\"event\":\"verdict\"," + verdictJson(verdict).substr(1) + "\n");
}

void LogPrinter::waiting(const char* what) {
    if (json_) out_.write(std::string("{\"event\":\"waiting\",\"for\":\"") + what + "\"}\n");
}

void LogPrinter::result(int code) {
    if (json_) out_.write("{\"event\":\"result\",\"code\":" + std::to_string(code) + "}\n");
}

}  // namespace corvane
