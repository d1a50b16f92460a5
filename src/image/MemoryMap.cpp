#include "image/MemoryMap.h"

#include <cstdio>

#include "text/Text.h"

namespace corvane {
namespace {

/// A screen reader reads the words out; a list of hundreds of segments would help nobody.
constexpr std::size_t kMostSegments = 16;

std::string counted(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string MemoryMap::address(std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%05llX", static_cast<unsigned long long>(value));
    return text;
}

std::string MemoryMap::summary() const { return counted(bytes, "byte") + " in " + counted(segments.size(), "segment"); }

std::string MemoryMap::words() const {
    std::vector<std::string> parts;
    auto free = first;
    for (const auto& segment : segments) {
        if (parts.size() >= 2 * kMostSegments) {
            parts.push_back("and more up to " + address(end - 1));
            break;
        }
        if (segment.first > free) parts.push_back("a gap of " + counted(segment.first - free, "byte"));
        parts.push_back(segmentText(segment));
        free = segment.first + segment.bytes;
    }
    return summary() + ": " + joined(parts, "; ") + ".";
}

std::optional<MemoryMap> memoryMapOf(const Image& image) {
    const auto& segments = image.report().segments;
    if (segments.empty()) return std::nullopt;
    MemoryMap map;
    map.first = segments.front().first;
    map.end = segments.back().first + segments.back().bytes;
    for (const auto& segment : segments) map.bytes += segment.bytes;
    map.segments = segments;
    return map;
}

}  // namespace corvane
