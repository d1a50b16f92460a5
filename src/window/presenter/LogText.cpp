#include "window/presenter/LogText.h"

namespace corvane {

bool LogText::append(std::string_view text) {
    constexpr std::size_t kFull = 16384;
    constexpr std::size_t kDropped = 255;
    const bool drops = text_.size() > kFull;
    if (drops) text_.erase(0, kDropped);
    text_ += text;
    return drops;
}

}  // namespace corvane
