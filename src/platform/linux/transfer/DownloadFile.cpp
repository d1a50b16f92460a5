#include "platform/linux/transfer/DownloadFile.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "text/Number.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path) { throw std::system_error(errno, std::generic_category(), path); }

constexpr std::string_view kStart = ".corvane-", kEnd = ".part";

/// Where the file may lie, the best place first.
std::vector<fs::path> foldersFor(const std::string& target) {
    if (!target.empty()) return {fs::path(target).parent_path()};
    std::vector<fs::path> folders = {"/tmp", "/var/tmp"};
    std::error_code error;
    const auto own = fs::temp_directory_path(error);
    if (!error) folders.insert(folders.begin(), own);
    return folders;
}

/// Whether a file of this name is what a killed program has left behind.
bool isLeft(const std::string& name) {
    if (name.substr(0, kStart.size()) != kStart || name.size() < kStart.size() + kEnd.size() ||
        name.substr(name.size() - kEnd.size()) != kEnd) {
        return false;
    }
    const double process = leadingNumber(std::string_view(name).substr(kStart.size()));
    return process >= 1 && process <= std::numeric_limits<pid_t>::max() && ::kill(static_cast<pid_t>(process), 0) < 0 &&
           errno == ESRCH;
}

void removeLeft(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (isLeft(at->path().filename().string())) ::unlink(at->path().c_str());
    }
}

}  // namespace

DownloadFile::DownloadFile(const std::string& target) {
    for (const auto& folder : foldersFor(target)) {
        if (open(folder)) {
            if (!target.empty()) removeLeft(folder);
            return;
        }
    }
    fail(path_);
}

bool DownloadFile::open(const fs::path& folder) {
    for (int n = 0;; ++n) {
        auto name = std::string(kStart) + std::to_string(::getpid()) + "-" + std::to_string(n) + std::string(kEnd);
        path_ = (folder / name).string();
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
