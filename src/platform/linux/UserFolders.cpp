#include "platform/linux/UserFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace corvane {
namespace {

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home == '/') return home;
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : "";
}

std::string folderOf(const char* variable, const char* below) {
    const char* named = std::getenv(variable);
    std::string folder = named && *named == '/' ? named : homeFolder() + below;
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return folder;
}

}  // namespace

std::string userConfigFolder() { return folderOf("XDG_CONFIG_HOME", "/.config"); }
std::string userDataFolder() { return folderOf("XDG_DATA_HOME", "/.local/share"); }

}  // namespace corvane
