#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Starts other programs, detached from this one. Each returns an empty text, or why it did not work.
class Launcher {
public:
    virtual ~Launcher() = default;

    /// A variable of the started program's environment, beyond what it inherits.
    struct Variable {
        std::string name, value;
    };

    /// Why this machine can start no such program: it is none, is for another kind of machine, or is not whole. Empty
    /// when it can. In UTF-8.
    virtual std::string fault(const std::string& path) = 0;

    /// Runs a program file that was checked before, if it is the same still: its SHA-256 in 64 digits. The owner's
    /// execute bit is set first; nobody else may write to it from then on.
    virtual std::string start(const std::string& path, const std::string& sha256,
                              const std::vector<Variable>& variables) = 0;

    /// Shows an address with the desktop's program for it.
    virtual std::string open(const std::string& address) = 0;
};

}  // namespace corvane
