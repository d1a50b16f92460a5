#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// One thing that is wrong with an image.
struct ImageFinding {
    std::size_t line = 0;  ///< counts from 1; 0 for the file as a whole
    std::string text;      ///< what is wrong, a sentence without its subject: "has a wrong checksum". UTF-8
};

/// A stretch of memory that an image fills without a gap.
struct MemorySegment {
    std::uint32_t first = 0;  ///< address
    std::uint64_t bytes = 0;
};

/// What an Intel HEX image would do to a device.
struct ImageReport {
    std::vector<ImageFinding> findings;   ///< in the file's order
    std::vector<MemorySegment> segments;  ///< by address
    std::size_t records = 0;              ///< ":" lines, damaged ones too
    std::uint64_t bytes = 0;              ///< of data

    bool isSound() const { return findings.empty(); }
};

/// Looks through an image the way it would be sent: records that are damaged, records that the order of sending (the
/// one at address 0 after its segment, the end record last) would lose or put in a wrong place, and which memory is
/// filled. A line that does not begin with ":" is no record and does not count, but a record that only stands behind
/// something else in its line is a finding.
ImageReport checkImage(std::string_view content);

/// "0x00000 to 0x0FFFF, 65536 bytes".
std::string segmentText(const MemorySegment& segment);

/// The findings as lines, "line 4 has a wrong checksum", the first so many of them and then how many more there are.
std::vector<std::string> findingLines(const std::vector<ImageFinding>& findings, std::size_t most);

}  // namespace corvane
