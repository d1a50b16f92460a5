#pragma once

#include <functional>
#include <memory>

#include "bench/DeviceSpec.h"
#include "bench/Loop.h"
#include "bench/OpenWatch.h"
#include "bench/Pty.h"
#include "models/PacedLine.h"

namespace corvane::bench {

/// One simulated device, the wire to it, and its pseudo-terminal. While the device is unplugged there is no terminal.
/// Loop and watch must live longer.
class Station : public Timed {
public:
    /// portsChanged is called after the device was unplugged or has come back.
    Station(Loop& loop, OpenWatch& watch, DeviceSpec spec, std::function<void()> portsChanged);
    ~Station() override;
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    const DeviceSpec& spec() const { return spec_; }
    std::string name() const { return "COM" + std::to_string(spec_.port); }

    /// The slave's path; empty while unplugged.
    std::string path() const { return pty_ ? pty_->path() : ""; }

    models::Device& device() { return device_; }
    const models::Device& device() const { return device_; }
    models::PacedLine& line() { return line_; }

    std::optional<Micros> nextAt() const override;
    void act(Micros now) override;

private:
    void plugIn();
    void hear();
    void checkPlug(Micros now);

    Loop& loop_;
    OpenWatch& watch_;
    DeviceSpec spec_;
    std::function<void()> portsChanged_;
    models::Device device_;
    models::PacedLine line_;
    std::unique_ptr<Pty> pty_;
    int watchNumber_ = -1;
    std::optional<Micros> comesBackAt_;
};

}  // namespace corvane::bench
