#include "platform/linux/SysfsPowerSupply.h"

#include <filesystem>
#include <fstream>

namespace corvane {
namespace {

/// The first word of a supply's attribute; nothing where it has none.
std::string attribute(const std::filesystem::path& supply, const char* name) {
    std::string word;
    std::ifstream(supply / name) >> word;
    return word;
}

}  // namespace

bool SysfsPowerSupply::isOnBattery() {
    bool discharges = false;
    std::error_code error;
    for (const auto& supply : std::filesystem::directory_iterator(folder_, error)) {
        if (attribute(supply, "scope") == "Device") continue;
        const bool isBattery = attribute(supply, "type") == "Battery";
        if (!isBattery && attribute(supply, "online") == "1") return false;
        discharges = discharges || (isBattery && attribute(supply, "status") == "Discharging");
    }
    return discharges;
}

}  // namespace corvane
