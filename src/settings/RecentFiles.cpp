#include "settings/RecentFiles.h"

#include "platform/Files.h"
#include "platform/ProgramInfo.h"

namespace corvane {
namespace {

std::string keyOf(std::size_t place) { return "File" + std::to_string(place + 1); }

}  // namespace

std::vector<std::string> RecentFiles::stored() const {
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < kMost; ++i) {
        auto path = store_.GetSetting(kProgramTitle, "Recent", keyOf(i), "");
        if (!path.empty()) paths.push_back(std::move(path));
    }
    return paths;
}

std::vector<std::string> RecentFiles::list() const {
    auto paths = stored();
    std::erase_if(paths, [](const std::string& path) { return !FileExists(path); });
    return paths;
}

bool RecentFiles::add(const std::string& path) {
    auto paths = stored();
    std::erase(paths, path);
    paths.insert(paths.begin(), path);
    paths.resize(kMost);
    bool saved = true;
    for (std::size_t i = 0; i < kMost; ++i) {
        saved = store_.SaveSetting(kProgramTitle, "Recent", keyOf(i), paths[i]) && saved;
    }
    return saved;
}

}  // namespace corvane
