#include "text/Variant.h"

namespace corvane {

Bytes bytesOf(const Variant& value) {
    if (const auto* bytes = std::get_if<Bytes>(&value)) return *bytes;
    if (const auto* text = std::get_if<std::string>(&value)) return bytesOf(*text);
    return {};
}

std::string textOf(const Variant& value) {
    if (const auto* bytes = std::get_if<Bytes>(&value)) return textOf(*bytes);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return {};
}

}  // namespace corvane
