#include "platform/linux/LinuxProgramFolder.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

#include "platform/linux/UserFolders.h"

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
        fs::create_directories(path_, error);  // a failure shows at the first file that is written there
    }
    beside_ = (folder / kLibraryName).string();
    private_ = (privateLibrary / kLibraryName).string();
}

std::string LinuxProgramFolder::transportLibrary() const {
    std::error_code error;
    if (const char* named = std::getenv(kHidLibraryVariable); named && *named)
        return fs::absolute(named, error).string();
    return fs::exists(beside_, error) ? beside_ : private_;
}

}  // namespace corvane
