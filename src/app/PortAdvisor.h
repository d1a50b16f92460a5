#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/PortInspector.h"
#include "platform/PortMap.h"
#include "platform/SerialControl.h"

namespace corvane {

/// Says why a port cannot be used and what mends it, in UTF-8. Owns nothing.
class PortAdvisor {
public:
    PortAdvisor(SerialControl& serial, PortMap& map, PortInspector& inspector)
        : serial_(serial), map_(map), inspector_(inspector) {}

    /// Why the reader that was tried last, this one, did not open.
    struct ReaderFailure {
        std::string words;  ///< empty when nobody knows
        std::string path;   ///< its node
        bool isInUse = false;
    };
    std::function<ReaderFailure(const std::string& port)> readerFailure;

    /// Why the port that was tried last did not open.
    std::string refusal(const std::string& port);

    /// What may disturb a scan of these ports, a sentence each.
    std::vector<std::string> beforeScan(const std::vector<std::string>& ports);

private:
    std::string readerRefusal(const std::string& port);
    std::string inUse(const std::string& place, const std::string& node);

    SerialControl& serial_;
    PortMap& map_;
    PortInspector& inspector_;
};

}  // namespace corvane
