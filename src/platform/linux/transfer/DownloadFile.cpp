#include "platform/linux/transfer/DownloadFile.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "platform/linux/files/LeftFiles.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path) { throw std::system_error(errno, std::generic_category(), path); }

/// Where the file may lie, the best place first.
std::vector<fs::path> foldersFor(const std::string& target) {
    if (!target.empty()) return {fs::path(target).parent_path()};
    std::vector<fs::path> folders = {"/tmp", "/var/tmp"};
    std::error_code error;
    const auto own = fs::temp_directory_path(error);
    if (!error) folders.insert(folders.begin(), own);
    return folders;
}

}  // namespace

DownloadFile::DownloadFile(const std::string& target) {
    for (const auto& folder : foldersFor(target)) {
        if (open(folder)) {
            if (!target.empty()) removeLeftFiles(folder.string());
            return;
        }
    }
    fail(path_);
}

bool DownloadFile::open(const fs::path& folder) {
    for (int n = 0;; ++n) {
        path_ = (folder / partName(std::to_string(n))).string();
        descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) return true;
        if (errno != EEXIST && errno != EINTR) return false;
    }
}

DownloadFile::~DownloadFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!path_.empty()) ::unlink(path_.c_str());
}

void DownloadFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            fail(path_);
        }
    }
}

std::string DownloadFile::finish() {
    // Some file systems find out only here that there is no room.
    if (::close(std::exchange(descriptor_, -1)) < 0 && errno != EINTR) fail(path_);
    return std::exchange(path_, {});
}

}  // namespace corvane
