#include "platform/linux/LinuxProgramFolder.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <unistd.h>

#include "platform/linux/UserFolders.h"
#include "platform/linux/files/StoredFolder.h"
#include "text/Number.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr char kLibraryName[] = "VellIO.so";

LinuxProgramFolder::Places placesOfThisProgram() {
    std::error_code error;
    return {fs::read_symlink("/proc/self/exe", error).string(), CORVANE_PRIVATE_LIB_RELATIVE,
            userDataFolder() + "/Corvane"};
}

}  // namespace

LinuxProgramFolder::LinuxProgramFolder() : LinuxProgramFolder(placesOfThisProgram()) {}

LinuxProgramFolder::LinuxProgramFolder(const Places& places) : data_(places.data) {
    const auto folder = fs::path(places.executable).parent_path();
    const auto privateLibrary = (folder / places.privateLibrary).lexically_normal();
    std::error_code error;
    const bool installed = fs::is_directory(privateLibrary, error);
    if (!installed && access(folder.c_str(), W_OK) == 0) {
        path_ = folder.string();
    } else {
        path_ = places.data;
        makeStoredFolder(path_);  // a failure shows at the first file that is written there
    }
    beside_ = (folder / kLibraryName).string();
    private_ = (privateLibrary / kLibraryName).string();
}

std::string LinuxProgramFolder::privateFolder() const {
    const fs::path all = fs::path(data_) / "fetched";
    std::error_code error;
    makeStoredFolder(all.string());
    // Each begins with the number of the process that made it.
    for (fs::directory_iterator at(all, error), end; !error && at != end; at.increment(error)) {
        const double process = leadingNumber(at->path().filename().string());
        const bool isProcess = process >= 1 && process <= std::numeric_limits<pid_t>::max();
        std::error_code ignored;
        if (isProcess && ::kill(static_cast<pid_t>(process), 0) < 0 && errno == ESRCH)
            fs::remove_all(at->path(), ignored);
    }
    auto name = (all / (std::to_string(::getpid()) + "-XXXXXX")).string();
    return ::mkdtemp(name.data()) ? name : std::string();
}

std::string LinuxProgramFolder::transportLibrary() const {
    std::error_code error;
    if (const char* named = std::getenv(kHidLibraryVariable); named && *named)
        return fs::absolute(named, error).string();
    return fs::exists(beside_, error) ? beside_ : private_;
}

}  // namespace corvane
