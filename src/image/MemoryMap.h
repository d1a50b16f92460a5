#pragma once

#include <optional>
#include <string>
#include <vector>

#include "image/Image.h"

namespace corvane {

/// Which memory an image fills, as a picture and in words (UTF-8).
struct MemoryMap {
    std::uint64_t first = 0;              ///< address
    std::uint64_t end = 0;                ///< address behind the last byte
    std::uint64_t bytes = 0;              ///< that are filled
    std::vector<MemorySegment> segments;  ///< by address; gaps lie between them

    /// "7424 bytes in 2 segments", for beside the picture.
    std::string summary() const;

    /// All of it for who does not see the picture: the segments one by one, with the gaps between them.
    std::string words() const;

    /// "0x04000", as the other texts about an image write it.
    static std::string address(std::uint64_t value);
};

/// Nothing for an image without data.
std::optional<MemoryMap> memoryMapOf(const Image& image);

}  // namespace corvane
