#pragma once

#include <string>
#include <utility>

#include "platform/PowerSupply.h"

namespace corvane {

/// Reads the kernel's folder of power supplies, one folder each. On battery is a computer none of whose mains is on
/// line while one of its batteries discharges; the battery of a mouse ("scope" Device) is none of the computer's.
class SysfsPowerSupply : public PowerSupply {
public:
    explicit SysfsPowerSupply(std::string folder = "/sys/class/power_supply") : folder_(std::move(folder)) {}

    bool isOnBattery() override;

private:
    std::string folder_;
};

}  // namespace corvane
