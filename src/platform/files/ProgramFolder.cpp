#include "platform/files/ProgramFolder.h"

#include <filesystem>

#include "text/Text.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The entry of a folder that is meant by a name; the name itself when there is none.
std::string matching(const std::string& folder, const std::string& name) {
    std::error_code error;
    if (fs::exists(folder + "/" + name, error)) return name;
    std::string best;
    for (fs::directory_iterator at(folder, error); !error && at != fs::directory_iterator(); at.increment(error)) {
        const auto entry = at->path().filename().string();
        if (equalsNoCase(entry, name) && (best.empty() || entry < best)) best = entry;
    }
    return best.empty() ? name : best;
}

}  // namespace

std::string ProgramFolder::resolve(std::string_view given) const {
    std::string result = path();
    for (const auto& part : split(replaceAll(std::string(given), "\\", "/"), '/')) {
        if (part.empty() || part == "." || part == "..") continue;
        result += "/" + matching(result, part);
    }
    return result;
}

}  // namespace corvane
