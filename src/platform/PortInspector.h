#pragma once

#include <optional>
#include <string>

namespace corvane {

/// A process that has a port open.
struct PortHolder {
    int process = 0;
    std::string program;

    /// "minicom (process 4711)"
    std::string text() const { return program + " (process " + std::to_string(process) + ")"; }
};

/// What the adapter that a serial port belongs to says about itself; empty for a built-in port.
struct PortAdapter {
    std::string product;
    std::string serialNumber;
    std::string socket;      ///< that it is plugged into, "1-2.4"
    std::string identity{};  ///< vendor and product, "0403:6001"
    std::string driver{};    ///< "ftdi_sio"
    std::string latency{};   ///< how long it may hold bytes back, in ms, where its driver tells
};

/// Who may use a port's device node, and who does. Paths and names in the system's bytes; what cannot be found
/// out is empty.
class PortInspector {
public:
    virtual ~PortInspector() = default;

    /// The name of this program's user.
    virtual std::string userName() = 0;

    virtual PortAdapter adapterOf(const std::string& node) = 0;

    /// The system's kernel, for people: "6.1.0-18-amd64".
    virtual std::string kernel() { return {}; }

    /// Whether the node is there, and whether this user may read and write it.
    virtual bool isThere(const std::string& node) = 0;
    virtual bool mayUse(const std::string& node) = 0;

    /// The name of the group that owns the node.
    virtual std::string groupOf(const std::string& node) = 0;

    /// Another process that has locked it as this program locks the ports that it opens.
    virtual std::optional<PortHolder> lockerOf(const std::string& node) = 0;

    /// The same, or else another process that has it open, as far as this user may see that.
    virtual std::optional<PortHolder> holderOf(const std::string& node) = 0;

    /// Whether the modem service runs and would open the node to look for a modem behind it.
    virtual bool isProbedForModems(const std::string& node) = 0;
};

}  // namespace corvane
