#pragma once

#include <string>

#include "bench/DeviceSpec.h"
#include "models/PacedLine.h"

namespace corvane::bench {

/// One simulated device, the wire to it, and the place where programs find it.
class Outlet {
public:
    explicit Outlet(DeviceSpec spec)
        : spec_(std::move(spec)), device_(spec_.device), line_(device_, spec_.device.baud) {}
    virtual ~Outlet() = default;
    Outlet(const Outlet&) = delete;
    Outlet& operator=(const Outlet&) = delete;

    const DeviceSpec& spec() const { return spec_; }

    /// The port name that programs use, COM3 or HID1.
    std::string name() const { return (spec_.isReader ? "HID" : "COM") + std::to_string(spec_.port); }

    /// Where that port is on this machine; empty while unplugged.
    virtual std::string path() const = 0;

    /// What the report says of it beside the device, for people; begins with "; " when it is not empty.
    virtual std::string remark() const { return {}; }

    models::Device& device() { return device_; }
    const models::Device& device() const { return device_; }
    models::PacedLine& line() { return line_; }
    const models::PacedLine& line() const { return line_; }

private:
    DeviceSpec spec_;
    models::Device device_;
    models::PacedLine line_;
};

}  // namespace corvane::bench
