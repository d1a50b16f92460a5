#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// One thing that is wrong with a file; line counts from 1, 0 means the whole file. Text in UTF-8.
struct ImageFinding {
    std::size_t line = 0;
    std::string text;
};

/// Bytes of an image without a gap between them.
struct MemorySegment {
    std::uint32_t first = 0;
    std::uint64_t bytes = 0;
};

/// What an Intel HEX image would do to a device.
struct ImageReport {
    std::vector<ImageFinding> findings;   ///< in the file's order
    std::vector<MemorySegment> segments;  ///< by address
    std::size_t records = 0;
    std::uint64_t bytes = 0;  ///< of data

    bool isSound() const { return findings.empty(); }
};

/// Reads an image as a boot loader would get it: what does not add up, what the order of sending would lose or
/// misplace, and which memory it fills. Lines that do not begin with ":" do not count.
ImageReport checkImage(std::string_view content);

/// "0x00000 to 0x0FFFF, 65536 bytes".
std::string segmentText(const MemorySegment& segment);

/// The findings as lines, the first so many of them and then how many more there are.
std::vector<std::string> findingLines(const std::vector<ImageFinding>& findings, std::size_t most);

}  // namespace corvane
