#include "bench/ConfigFolder.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <sys/stat.h>

#include "bench/Descriptor.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "# Written by corvane-bench; a program that reads this sees simulated devices only.\n";

[[noreturn]] void fail(const std::string& path, const std::string& why) { throw std::runtime_error(path + ": " + why); }

std::string temporaryFolder() {
    std::error_code error;
    std::string path = fs::temp_directory_path(error).string() + "/corvane-bench-XXXXXX";
    if (!mkdtemp(path.data())) fail(path, std::strerror(errno));
    return path;
}

void makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0700) < 0 && errno != EEXIST) fail(path, std::strerror(errno));
}

bool isOurs(const std::string& mapFile) {
    try {
        return readFile(mapFile).rfind(kMark, 0) == 0;
    } catch (const RuntimeError&) {
        return false;
    }
}

std::string mapFile(const std::string& folder) { return folder + "/Corvane/serialcomm.conf"; }
std::string settingsFile(const std::string& folder) { return folder + "/Corvane/Corvane.conf"; }

}  // namespace

void writeWhole(const std::string& path, const std::string& text) {
    const std::string part = path + ".part";
    {
        const Descriptor file(open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), part.c_str());
        if (write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            fail(part, std::strerror(errno));
        }
    }
    if (rename(part.c_str(), path.c_str()) < 0) fail(path, std::strerror(errno));
}

ConfigFolder::ConfigFolder(std::string path)
    : isTemporary_(path.empty()), path_(isTemporary_ ? temporaryFolder() : std::move(path)) {
    if ((fs::exists(mapFile(path_)) || fs::exists(settingsFile(path_))) && !isOurs(mapFile(path_))) {
        fail(path_, "holds a configuration that the bench has not written; give it another folder");
    }
    makeFolder(path_);
    makeFolder(path_ + "/Corvane");
    makeFolder(data());
}

ConfigFolder::~ConfigFolder() {
    std::error_code ignored;
    if (isTemporary_) fs::remove_all(path_, ignored);
}

void ConfigFolder::writePorts(const std::map<int, std::string>& paths) const {
    std::string text = std::string(kMark) + "auto=off\n";
    for (const auto& [port, path] : paths) text += "COM" + std::to_string(port) + "=" + path + "\n";
    writeWhole(mapFile(path_), text);
}

void ConfigFolder::writeSettings(const std::vector<Setting>& settings) const {
    if (settings.empty() && fs::exists(settingsFile(path_))) return;  // what a program has kept there
    std::map<std::string, std::string> sections = {
        {"FTP", "Keyring=False\n"}};  // the operator's own is not for practice
    for (const auto& setting : settings) sections[setting.section] += setting.key + "=" + setting.value + "\n";
    std::string text;
    for (const auto& [section, lines] : sections) text.append("[").append(section).append("]\n").append(lines);
    writeWhole(settingsFile(path_), text);
}

}  // namespace corvane::bench
