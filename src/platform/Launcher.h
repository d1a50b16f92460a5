#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Starts other programs, detached from this one. Both return an empty text, or why it did not work.
class Launcher {
public:
    virtual ~Launcher() = default;

    /// A variable of the started program's environment, beyond what it inherits.
    struct Variable {
        std::string name, value;
    };

    /// Runs a program file; the owner's execute bit is set first.
    virtual std::string start(const std::string& path, const std::vector<Variable>& variables) = 0;

    /// Shows an address with the desktop's program for it.
    virtual std::string open(const std::string& address) = 0;
};

}  // namespace corvane
