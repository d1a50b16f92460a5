#include "platform/linux/LinuxPortMap.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <tuple>

#include "platform/linux/UserFolders.h"
#include "platform/serial/PortMapFile.h"
#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 63;  // of a device in the list; whoever walks the list stops at a longer one

constexpr std::array<std::string_view, 5> kHardware = {"ttyS", "ttyAMA", "ttyUSB", "ttyACM", "rfcomm"};

/// The place of a device's kind in the order of the list, and its number; nothing when it is no hardware.
std::optional<std::tuple<std::size_t, double>> orderOf(std::string_view device) {
    for (std::size_t kind = 0; kind < kHardware.size(); ++kind) {
        if (device.substr(0, kHardware[kind].size()) != kHardware[kind]) continue;
        const auto number = device.substr(kHardware[kind].size());
        if (number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos) continue;
        return std::tuple(kind, leadingNumber(number));
    }
    return std::nullopt;
}

std::string attribute(const std::string& path) {
    try {
        const auto content = readFile(path);
        return std::string(trimmed(std::string_view(content).substr(0, content.find('\n'))));
    } catch (const RuntimeError&) {
        return {};
    }
}

}  // namespace

LinuxPortMap::LinuxPortMap() : places_{userConfigFolder() + "/Corvane/serialcomm.conf"} {}

bool LinuxPortMap::isConsole(const std::string& device) const {
    const auto active = split(attribute(places_.ttys + "/console/active"), ' ');
    return std::find(active.begin(), active.end(), device) != active.end();
}

/// The kernel keeps ports for hardware that is not there, and says so with type 0.
bool LinuxPortMap::isReal(const std::string& device) const {
    std::error_code error;
    return attribute(places_.ttys + "/" + device + "/type") != "0" && fs::exists(places_.devices + "/" + device, error);
}

/// The machine's own ports in their order; nothing when the kernel does not tell.
std::optional<std::vector<std::string>> LinuxPortMap::hardware() const {
    std::error_code error;
    std::vector<std::string> found;
    fs::directory_iterator at(places_.ttys, error);
    if (error) return std::nullopt;
    for (; at != fs::directory_iterator(); at.increment(error)) {
        const auto device = at->path().filename().string();
        if (orderOf(device) && isReal(device) && !isConsole(device)) found.push_back(device);
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return orderOf(a) < orderOf(b); });
    return found;
}

/// "ttyUSB0" or "pts/3", whatever links lead there; of what does not exist, the last part of its path.
std::string LinuxPortMap::kernelName(const std::string& path) const {
    std::error_code error;
    const auto node = fs::canonical(path, error).string();
    if (error) return lastPart(path);
    const auto folder = fs::canonical(places_.devices, error).string() + "/";
    const bool isBelow = !error && node.compare(0, folder.size(), folder) == 0;
    return isBelow ? node.substr(folder.size()) : lastPart(node);
}

std::optional<std::vector<PortMapEntry>> LinuxPortMap::list() {
    auto file = readPortMapFile(places_.file);
    problems_ = std::move(file.problems);
    paths_.emplace();
    std::vector<PortMapEntry> entries;
    std::set<std::string> taken;
    for (const auto& [number, path] : file.paths) {
        const auto device = kernelName(path);
        const auto port = "COM" + std::to_string(number);
        if (isConsole(device)) {
            problems_.push_back(places_.file + ": " + port + " is not used: " + path +
                                " is the kernel's console; name another device.");
            continue;
        }
        entries.push_back({device.substr(0, kLongestName), port});
        taken.insert(device);
        paths_->emplace(number, path);
    }
    if (!file.listsOthers) return entries;
    const auto others = hardware();
    if (!others && entries.empty()) return std::nullopt;
    int number = 1;
    for (const auto& device : others.value_or(std::vector<std::string>())) {
        if (taken.count(device)) continue;
        while (file.paths.count(number)) ++number;
        entries.push_back({device, "COM" + std::to_string(number)});
        paths_->emplace(number++, places_.devices + "/" + device);
    }
    return entries;
}

std::vector<std::string> LinuxPortMap::problems() {
    if (!paths_) list();
    return problems_;
}

std::optional<std::string> LinuxPortMap::devicePath(int number) {
    if (!paths_) list();
    const auto found = paths_->find(number);
    if (found == paths_->end()) return std::nullopt;
    return found->second;
}

}  // namespace corvane
