#pragma once

#include <memory>
#include <string>

#include "bench/DeviceSpec.h"
#include "models/PacedLine.h"
#include "models/Replay.h"

namespace corvane::bench {

/// One simulated device, the wire to it, and the place where programs find it.
class Outlet {
public:
    /// A recorded device stands in for the simulated one, when there is one; its answers bring the line's time along.
    explicit Outlet(DeviceSpec spec, std::unique_ptr<models::ReplayThen> recorded = nullptr)
        : spec_(std::move(spec)),
          device_(spec_.device),
          line_(device_, spec_.device.baud),
          recorded_(std::move(recorded)) {}
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

    /// The recorded device; null when this is a simulated one.
    const models::ReplayThen* recorded() const { return recorded_.get(); }

protected:
    /// What the host's end leads to.
    models::Peer& wire() { return recorded_ ? static_cast<models::Peer&>(*recorded_) : line_; }
    const models::Peer& wire() const { return recorded_ ? static_cast<const models::Peer&>(*recorded_) : line_; }

private:
    DeviceSpec spec_;
    models::Device device_;
    models::PacedLine line_;
    std::unique_ptr<models::ReplayThen> recorded_;
};

}  // namespace corvane::bench
