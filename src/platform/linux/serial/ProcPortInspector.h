#pragma once

#include "platform/PortInspector.h"

namespace corvane {

/// Reads /proc, /sys, the node itself and udev's database.
class ProcPortInspector : public PortInspector {
public:
    struct Places {
        std::string proc = "/proc";
        std::string udev = "/run/udev/data";
        std::string ttys = "/sys/class/tty";  ///< a folder for each tty that the kernel has
    };

    ProcPortInspector() = default;
    explicit ProcPortInspector(Places places) : places_(std::move(places)) {}

    PortAdapter adapterOf(const std::string& node) override;
    std::string kernel() override;
    bool isThere(const std::string& node) override;
    bool mayUse(const std::string& node) override;
    std::string userName() override;
    std::string groupOf(const std::string& node) override;
    std::optional<PortHolder> lockerOf(const std::string& node) override;
    std::optional<PortHolder> holderOf(const std::string& node) override;
    bool isProbedForModems(const std::string& node) override;

private:
    Places places_;
};

}  // namespace corvane
