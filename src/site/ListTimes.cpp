#include "site/ListTimes.h"

#include <charconv>

#include "platform/files/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string contentOf(const std::string& path) {
    try {
        return readFile(path);
    } catch (const RuntimeError&) {
        return {};  // there is none yet
    }
}

/// What a line keeps of this server; nothing when it is another's.
std::optional<std::int64_t> timeIn(std::string_view line, const std::string& server) {
    const auto tab = line.find('\t');
    if (tab == std::string_view::npos || !equalsNoCase(line.substr(tab + 1), server)) return std::nullopt;
    std::int64_t time = 0;
    std::from_chars(line.data(), line.data() + tab, time);
    return time;
}

}  // namespace

std::optional<std::int64_t> ListTimes::of(const std::string& server) const {
    const auto content = contentOf(path());
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        if (const auto time = timeIn(line, server)) return time;
    }
    return std::nullopt;
}

std::string ListTimes::keep(const std::string& server, std::int64_t time) {
    if (of(server) == time) return {};
    if (const auto why = files_.makeFolder(folder_); !why.empty()) return "no folder can be made: " + why;
    const auto lock = files_.lock(folder_);
    if (!lock) return "another program keeps it";
    std::string kept = std::to_string(time) + "\t" + server + "\n";
    const auto content = contentOf(path());
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        if (!timeIn(line, server)) kept.append(line).append("\n");
    }
    return files_.replace(path(), kept, FileStore::Named::byProgram);
}

}  // namespace corvane
