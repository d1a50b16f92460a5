#include "platform/serial/ParityMarks.h"

namespace corvane {

Bytes ParityMarks::removed(const std::uint8_t* data, std::size_t size, std::uint8_t replacement) {
    constexpr std::uint8_t kMark = 0xFF;
    Bytes bytes;
    bytes.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        if (seen_ == Seen::error) {
            bytes.push_back(replacement);
            seen_ = Seen::none;
        } else if (seen_ == Seen::mark && data[i] == 0) {
            seen_ = Seen::error;
        } else if (seen_ == Seen::none && data[i] == kMark) {
            seen_ = Seen::mark;
        } else {
            bytes.push_back(data[i]);
            seen_ = Seen::none;
        }
    }
    return bytes;
}

}  // namespace corvane
