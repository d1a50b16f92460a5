#include "vellio/DeviceList.h"

#include <algorithm>

#include "text/Text.h"

namespace corvane::vellio {

bool hasIds(const DeviceInfo& info, std::int32_t vendor, std::int32_t product) {
    return (vendor == kAnyId || vendor == info.vendor) && (product == kAnyId || product == info.product);
}

bool DeviceList::isWanted(const DeviceInfo& info) const {
    return std::any_of(wanted_.begin(), wanted_.end(),
                       [&info](const auto& pair) { return hasIds(info, pair.first, pair.second); });
}

int DeviceList::lowestFreeNumber() const {
    int number = 1;
    for (const auto& device : devices_) {  // they are in order
        if (device.number != number) break;
        ++number;
    }
    return number;
}

DeviceList::Changes DeviceList::update(const std::vector<DeviceInfo>& plugged, const std::vector<std::string>& gone) {
    Changes changes;
    for (auto it = devices_.begin(); it != devices_.end();) {
        const auto same = [it](const DeviceInfo& info) { return info.path == it->info.path; };
        const bool left = std::find(gone.begin(), gone.end(), it->info.path) != gone.end();
        if (!left && std::any_of(plugged.begin(), plugged.end(), same)) {
            ++it;
        } else {
            changes.gone.push_back(std::move(*it));
            it = devices_.erase(it);
        }
    }
    for (const auto& info : plugged) {
        const auto same = [&info](const Device& device) { return device.info.path == info.path; };
        if (!isWanted(info) || std::any_of(devices_.begin(), devices_.end(), same)) continue;
        Device device{lowestFreeNumber(), info};
        for (auto* text : {&device.info.manufacturer, &device.info.name, &device.info.serialNumber}) {
            *text = onOneLine(std::move(*text));  // people see it, in logs of one line each
        }
        devices_.insert(devices_.begin() + (device.number - 1), device);
        changes.come.push_back(device);
    }
    return changes;
}

const Device* DeviceList::at(std::int32_t index) const {
    return index >= 0 && index < count() ? &devices_[static_cast<std::size_t>(index)] : nullptr;
}

std::string DeviceList::textOf(const Device& device) const { return nameOf(device) + " " + device.info.name; }

const Device* DeviceList::find(const std::string& device) const {
    for (const auto& candidate : devices_) {
        if (equalsNoCase(device, nameOf(candidate)) || device == textOf(candidate) || device == candidate.info.path) {
            return &candidate;
        }
    }
    return nullptr;
}

}  // namespace corvane::vellio
