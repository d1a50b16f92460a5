#include "platform/linux/files/LeftFiles.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string_view>
#include <unistd.h>

#include "text/Number.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kStart = ".corvane-", kEnd = ".part";

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

}  // namespace

std::string partName(const std::string& distinction) {
    return std::string(kStart) + std::to_string(::getpid()) + "-" + distinction + std::string(kEnd);
}

void removeLeftFiles(const std::string& folder) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (isLeft(at->path().filename().string())) ::unlink(at->path().c_str());
    }
}

}  // namespace corvane
