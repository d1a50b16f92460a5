#include "site/LocalImageLoader.h"

#include "platform/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kMostRecords = 32768;

/// Fills the record store; false when the file has no record.
bool readRecords(const std::string& path, std::vector<std::string>& records) {
    if (!FileExists(path)) return false;
    std::string content;
    try {
        content = readFile(path);
    } catch (const RuntimeError&) {
        return false;
    }
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        if (!line.empty() && line.front() == ':' && records.size() < kMostRecords) records.emplace_back(line);
    }
    return !records.empty();
}

}  // namespace

bool LoadHexInfo(InfReader& reader, const std::string& path, LocalImage& image) {
    image = {};
    if (!readRecords(path, image.records)) {
        image.program = "Invalid File Format!!";
        return false;
    }
    image.path = path;
    image.program = reader.ReadInfValue("INFO", "PGM", "", path);
    if (image.program.empty()) return true;
    image.version = reader.ReadInfValue("INFO", "VER", "", path);
    image.date = reader.ReadInfValue("INFO", "BUD", "", path);
    return true;
}

}  // namespace corvane
