#include "platform/files/Files.h"

#include <algorithm>
#include <filesystem>

namespace corvane {

bool FileExists(const std::string& path) {
    std::error_code error;
    return !path.empty() && std::filesystem::is_regular_file(path, error);
}

bool FolderExists(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

bool isSpecialFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_other(path, error);
}

bool isSameFile(const std::string& one, const std::string& other) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::exists(one, error) || fs::exists(other, error)) return fs::equivalent(one, other, error);
    return fs::weakly_canonical(fs::absolute(one, error), error) ==
           fs::weakly_canonical(fs::absolute(other, error), error);
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        std::error_code isGone;
        if (at->is_regular_file(isGone)) names.push_back(at->path().filename().string());
    }
    return names;
}

std::string makeFolder(const std::string& path, const std::function<void(const std::string& folder)>& madeIn) {
    if (FolderExists(path)) return {};
    const auto above = std::filesystem::path(path).parent_path().string();
    if (!above.empty() && above != path) {
        if (auto why = makeFolder(above, madeIn); !why.empty()) return why;
    }
    std::error_code error;
    const bool isMade = std::filesystem::create_directory(path, error);
    if (!FolderExists(path)) return path + ": " + error.message();
    if (isMade && madeIn) madeIn(above.empty() ? "." : above);
    return {};
}

bool deleteFile(const std::string& path) {
    std::string why;
    return deleteFile(path, why);
}

bool deleteFile(const std::string& path, std::string& why) {
    if (FolderExists(path)) {
        why = "it is a folder";
        return false;
    }
    std::error_code error;
    std::filesystem::remove(path, error);
    why = error.message();
    return !error || !FileExists(path);  // what another program has put there since is its own
}

bool isSafeFileName(const std::string& name) {
    const auto isBad = [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code < 0x20 || code == 0x7F || c == '/' || c == '\\';
    };
    return !name.empty() && name != "." && name != ".." && std::none_of(name.begin(), name.end(), isBad);
}

}  // namespace corvane
