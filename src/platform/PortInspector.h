#pragma once

#include <optional>
#include <string>

namespace corvane {

/// A process that has a port open.
struct PortHolder {
    int process = 0;
    std::string program;
};

/// Who may use a serial port's device node, and who does. Paths and names in the system's bytes; what cannot be found
/// out is empty.
class PortInspector {
public:
    virtual ~PortInspector() = default;

    /// The name of this program's user.
    virtual std::string userName() = 0;

    /// The name of the group that owns the node.
    virtual std::string groupOf(const std::string& node) = 0;

    /// Another process that has it open, as far as this user may see that.
    virtual std::optional<PortHolder> holderOf(const std::string& node) = 0;

    /// Whether the modem service runs and would open the node to look for a modem behind it.
    virtual bool isProbedForModems(const std::string& node) = 0;
};

}  // namespace corvane
