#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "vellio/HidBackend.h"

namespace corvane::vellio {

constexpr std::int32_t kAnyId = -1;

struct Device {
    int number = 0;  ///< from 1; kept while it is plugged in
    DeviceInfo info;
};

/// The plugged devices of the wanted vendors and products, in the order of their numbers.
class DeviceList {
public:
    struct Changes {
        std::vector<Device> gone;
        std::vector<Device> come;
    };

    void want(std::int32_t vendor, std::int32_t product) { wanted_.emplace_back(vendor, product); }

    /// Takes over what is plugged in now. A device whose path is among the gone ones counts as another device, even if
    /// one is there again. A newcomer gets the lowest number that is free.
    Changes update(const std::vector<DeviceInfo>& plugged, const std::vector<std::string>& gone);

    int count() const { return static_cast<int>(devices_.size()); }
    const Device* at(std::int32_t index) const;

    /// By port name (any case), device text or path; null when there is none.
    const Device* find(const std::string& device) const;

    std::string nameOf(const Device& device) const { return prefix_ + std::to_string(device.number); }
    std::string textOf(const Device& device) const;

    const std::string& prefix() const { return prefix_; }
    void prefix(const std::string& prefix) { prefix_ = prefix; }

private:
    bool isWanted(const DeviceInfo& info) const;
    int lowestFreeNumber() const;

    std::vector<std::pair<std::int32_t, std::int32_t>> wanted_;
    std::vector<Device> devices_;
    std::string prefix_ = "HID";
};

/// True when a device has that pair; -1 means any.
bool hasIds(const DeviceInfo& info, std::int32_t vendor, std::int32_t product);

}  // namespace corvane::vellio
