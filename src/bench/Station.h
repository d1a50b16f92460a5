#pragma once

#include <functional>
#include <memory>

#include "bench/Loop.h"
#include "bench/OpenWatch.h"
#include "bench/Outlet.h"
#include "bench/Pty.h"

namespace corvane::bench {

/// One simulated device on a pseudo-terminal. While the device is unplugged there is no terminal. Loop and watch must
/// live longer.
class Station : public Outlet, public Timed {
public:
    /// portsChanged is called after the device was unplugged or has come back.
    Station(Loop& loop, OpenWatch& watch, DeviceSpec spec, std::function<void()> portsChanged,
            std::unique_ptr<models::ReplayThen> recorded = nullptr);
    ~Station() override;

    /// The slave's path.
    std::string path() const override { return pty_ ? pty_->path() : ""; }

    std::optional<Micros> nextAt() const override;
    void act(Micros now) override;

private:
    void plugIn();
    void hear();
    void checkPlug(Micros now);

    Loop& loop_;
    OpenWatch& watch_;
    std::function<void()> portsChanged_;
    std::unique_ptr<Pty> pty_;
    int watchNumber_ = -1;
    std::optional<Micros> comesBackAt_;
};

}  // namespace corvane::bench
