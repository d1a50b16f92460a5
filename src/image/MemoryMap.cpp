#include "image/MemoryMap.h"

#include <cstdio>

#include "platform/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kMostSegments = 16;  // read aloud; nobody listens to more

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

std::optional<MemoryMap> memoryMapOf(const std::string& path) {
    if (!FileExists(path)) return std::nullopt;
    ImageReport report;
    try {
        report = checkImage(readFile(path));
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
    if (report.segments.empty()) return std::nullopt;
    MemoryMap map;
    map.first = report.segments.front().first;
    map.end = report.segments.back().first + report.segments.back().bytes;
    for (const auto& segment : report.segments) map.bytes += segment.bytes;
    map.segments = std::move(report.segments);
    return map;
}

}  // namespace corvane
