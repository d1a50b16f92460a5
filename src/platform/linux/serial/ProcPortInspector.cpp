#include "platform/linux/serial/ProcPortInspector.h"

#include <cstdio>
#include <filesystem>
#include <grp.h>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& path) {
    try {
        return readFile(path.string());
    } catch (const RuntimeError&) {
        return {};
    }
}

std::string firstLine(const std::string& text) { return std::string(trimmed(text.substr(0, text.find('\n')))); }

std::string programOf(const fs::path& process) { return firstLine(contentOf(process / "comm")); }

bool isProcess(const fs::path& path) { return isNumeric(path.filename().string()); }

/// Whether one of a process's descriptors is the device of that number.
bool holdsDevice(const fs::path& process, dev_t device) {
    std::error_code error;
    for (fs::directory_iterator at(process / "fd", error), end; !error && at != end; at.increment(error)) {
        struct stat status {};
        if (stat(at->path().c_str(), &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == device) return true;
    }
    return false;
}

/// Whether a process is what a pseudo-terminal leads to, as a simulated device is: that has it open at all times.
bool isFarEnd(const fs::path& process, dev_t device) {
    constexpr unsigned kPseudoTerminal = 136;  // the kernel's number of the driver
    if (major(device) != kPseudoTerminal) return false;
    const auto line = "tty-index:\t" + std::to_string(minor(device)) + "\n";
    std::error_code error;
    for (fs::directory_iterator at(process / "fdinfo", error), end; !error && at != end; at.increment(error)) {
        if (contentOf(at->path()).find(line) != std::string::npos) return true;
    }
    return false;
}

/// Calls the function with each process's folder until it is true.
template <typename Function>
bool anyProcess(const std::string& proc, Function function) {
    std::error_code error;
    for (fs::directory_iterator at(proc, error), end; !error && at != end; at.increment(error)) {
        if (isProcess(at->path()) && function(at->path())) return true;
    }
    return false;
}

}  // namespace

/// The nearest folder above the port's that describes a USB device.
PortAdapter ProcPortInspector::adapterOf(const std::string& node) {
    std::error_code error;
    const auto name = fs::canonical(node, error).filename();
    auto folder = error ? fs::path() : fs::canonical(fs::path(places_.ttys) / name / "device", error);
    for (; !error && folder.has_relative_path(); folder = folder.parent_path()) {
        if (!fs::exists(folder / "idVendor", error)) continue;
        const auto port = fs::path(places_.ttys) / name / "device";
        return {firstLine(contentOf(folder / "product")),
                firstLine(contentOf(folder / "serial")),
                folder.filename().string(),
                firstLine(contentOf(folder / "idVendor")) + ":" + firstLine(contentOf(folder / "idProduct")),
                fs::canonical(port / "driver", error).filename().string(),
                firstLine(contentOf(port / "latency_timer"))};
    }
    return {};
}

std::string ProcPortInspector::kernel() {
    return firstLine(contentOf(fs::path(places_.proc) / "sys/kernel/osrelease"));
}

bool ProcPortInspector::isThere(const std::string& node) { return access(node.c_str(), F_OK) == 0; }

bool ProcPortInspector::mayUse(const std::string& node) { return access(node.c_str(), R_OK | W_OK) == 0; }

std::string ProcPortInspector::userName() {
    const auto* user = getpwuid(geteuid());
    return user ? user->pw_name : std::to_string(geteuid());
}

std::string ProcPortInspector::groupOf(const std::string& node) {
    struct stat status {};
    if (stat(node.c_str(), &status) != 0) return {};
    const auto* group = getgrgid(status.st_gid);
    return group ? group->gr_name : std::to_string(status.st_gid);
}

/// The kernel tells everybody who has locked which file (flock), a line each: "3: FLOCK  ADVISORY  WRITE 812 00:05:94 0
/// EOF", with process, file system and file. A process of another container has no number there.
std::optional<PortHolder> ProcPortInspector::lockerOf(const std::string& node) {
    struct stat status {};
    if (stat(node.c_str(), &status) != 0) return std::nullopt;
    char file[64];
    std::snprintf(file, sizeof file, "%02x:%02x:%llu", major(status.st_dev), minor(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino));
    std::istringstream lines(contentOf(fs::path(places_.proc) / "locks"));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string number, kind, mode, access, where;
        int process = 0;
        words >> number >> kind >> mode >> access >> process >> where;
        if (kind != "FLOCK" || where != file || process <= 0 || process == getpid()) continue;
        return PortHolder{process, programOf(fs::path(places_.proc) / std::to_string(process))};
    }
    return std::nullopt;
}

std::optional<PortHolder> ProcPortInspector::holderOf(const std::string& node) {
    if (auto holder = lockerOf(node)) return holder;
    struct stat status {};
    if (stat(node.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) return std::nullopt;
    std::optional<PortHolder> holder;
    anyProcess(places_.proc, [&](const fs::path& process) {
        const int number = static_cast<int>(leadingNumber(process.filename().string()));
        if (number == getpid() || !holdsDevice(process, status.st_rdev)) return false;
        if (isFarEnd(process, status.st_rdev)) return false;
        holder = PortHolder{number, programOf(process)};
        return true;
    });
    return holder;
}

bool ProcPortInspector::isProbedForModems(const std::string& node) {
    std::error_code error;
    const auto name = fs::canonical(node, error).filename().string();
    struct stat status {};
    if (error || (name.rfind("ttyUSB", 0) != 0 && name.rfind("ttyACM", 0) != 0)) return false;
    if (stat(node.c_str(), &status) != 0) return false;
    if (!anyProcess(places_.proc, [](const fs::path& process) { return programOf(process) == "ModemManager"; }))
        return false;
    const auto number = "c" + std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
    return contentOf(fs::path(places_.udev) / number).find("E:ID_MM_DEVICE_IGNORE=1") == std::string::npos;
}

}  // namespace corvane
