#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// One serial port that exists now: the kernel's name for it and the name that this program uses, "COM" and a number.
struct PortMapEntry {
    std::string device;
    std::string port;
};

/// Which serial ports there are and where they lie.
class PortMap {
public:
    virtual ~PortMap() = default;

    /// Looks afresh; nothing when the list cannot be read at all.
    virtual std::optional<std::vector<PortMapEntry>> list() = 0;

    /// The device node of COM<number> in the system's bytes, as the last list had it (made now if there was none);
    /// nothing when no such port is known.
    virtual std::optional<std::string> devicePath(int number) = 0;

    /// What is wrong with the map file as the last list had it (made now if there was none), a sentence a line that
    /// could not be used.
    virtual std::vector<std::string> problems() = 0;

    /// The map file, in the system's bytes; empty where there is none.
    virtual std::string file() const { return {}; }
};

}  // namespace corvane
