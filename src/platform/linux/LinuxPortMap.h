#pragma once

#include <map>

#include "platform/PortMap.h"

namespace corvane {

/// The ports that the operator's file names, and behind them the hardware ttys of this machine, which take the lowest
/// free numbers: built-in ones first, then USB, then Bluetooth, each kind by its own numbers. A named path that does
/// not exist is listed too, for its opening tells the operator why. The kernel's console is never listed.
class LinuxPortMap : public PortMap {
public:
    struct Places {
        std::string file;                     ///< the operator's
        std::string ttys = "/sys/class/tty";  ///< a folder for each tty that the kernel has
        std::string devices = "/dev";
    };

    /// With the file of this user, Corvane/serialcomm.conf in the configuration folder.
    LinuxPortMap();
    explicit LinuxPortMap(Places places) : places_(std::move(places)) {}

    std::optional<std::vector<PortMapEntry>> list() override;
    std::optional<std::string> devicePath(int number) override;
    std::vector<std::string> problems() override;
    std::string file() const override { return places_.file; }

private:
    bool isConsole(const std::string& device) const;
    bool isReal(const std::string& device) const;
    std::optional<std::vector<std::string>> hardware() const;
    std::string kernelName(const std::string& path) const;

    Places places_;
    std::optional<std::map<int, std::string>> paths_;  // of the last list
    std::vector<std::string> problems_;
};

}  // namespace corvane
