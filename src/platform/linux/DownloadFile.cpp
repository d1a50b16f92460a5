#include "platform/linux/DownloadFile.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace corvane {
namespace {

[[noreturn]] void fail(const std::string& path) { throw std::system_error(errno, std::generic_category(), path); }

std::filesystem::path folderFor(const std::string& target) {
    return target.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(target).parent_path();
}

}  // namespace

DownloadFile::DownloadFile(const std::string& target) {
    const auto start = ".corvane-" + std::to_string(::getpid()) + "-";
    const auto folder = folderFor(target);
    for (int n = 0;; ++n) {
        path_ = (folder / (start + std::to_string(n) + ".part")).string();
        descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) return;
        if (errno != EEXIST && errno != EINTR) fail(path_);
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
