#include "run/RunJournal.h"

#include <filesystem>
#include <fstream>

#include "platform/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// The file has a line for each value, so a value must not hold line ends; they are left out.
std::string oneLine(std::string text) {
    std::erase_if(text, [](char c) { return c == '\n' || c == '\r'; });
    return text;
}

bool readRun(Lines& lines, InterruptedRun& run) {
    std::string_view line;
    for (auto* value : {&run.time, &run.port, &run.device, &run.image}) {
        if (!lines.next(line)) return false;
        *value = line;
    }
    return true;
}

}  // namespace

std::string InterruptedRun::brief() const {
    constexpr std::size_t kToTheMinute = 16;
    return time.substr(0, kToTheMinute) + ": " + port + ", " + device;
}

std::string InterruptedRun::text() const {
    return "A device was left in its boot loader at " + brief() + ". To go on, force an update with the image " +
           image + ".";
}

std::vector<InterruptedRun> RunJournal::read() const {
    std::vector<InterruptedRun> runs;
    try {
        const auto content = readFile(path());
        Lines lines(content);
        for (InterruptedRun run; readRun(lines, run);) runs.push_back(run);
    } catch (const RuntimeError&) {
        return {};  // nothing was interrupted
    }
    return runs;
}

bool RunJournal::add(const InterruptedRun& run) const {
    auto runs = read();
    std::erase_if(runs, [&run](const InterruptedRun& other) { return other.port == run.port; });
    runs.push_back(run);
    return write(runs);
}

bool RunJournal::remove(const std::string& port) const {
    auto runs = read();
    std::erase_if(runs, [&port](const InterruptedRun& run) { return run.port == port; });
    return runs.empty() ? clear() : write(runs);
}

bool RunJournal::clear() const { return deleteFile(path()); }

bool RunJournal::write(const std::vector<InterruptedRun>& runs) const {
    if (!makeFolder(folder_.dataPath())) return false;
    const auto fresh = path() + ".new";
    {
        std::ofstream file(fresh, std::ios::binary | std::ios::trunc);
        for (const auto& run : runs) {
            for (const auto* value : {&run.time, &run.port, &run.device, &run.image}) file << oneLine(*value) << '\n';
        }
        if (!file.flush()) return false;
    }
    std::error_code error;
    std::filesystem::rename(fresh, path(), error);
    return !error;
}

}  // namespace corvane
