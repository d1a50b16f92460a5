#pragma once

#include <string>
#include <vector>

namespace corvane {

/// The row of port buttons that shows during a scan. Buttons are numbered as the scan's order; an empty name has none.
class PortPanel {
public:
    virtual ~PortPanel() = default;
    virtual void showPorts(const std::vector<std::string>& names) = 0;
    virtual void enablePort(int index, bool enabled) = 0;
    virtual void hidePorts() = 0;

    /// The scan is about to try one of its settings on a port.
    virtual void trying(const std::string& port, const std::string& settings) = 0;

    /// A port did not open; the log says no more than that, here is the place to say why.
    virtual void portRefused(const std::string& port) = 0;
};

}  // namespace corvane
