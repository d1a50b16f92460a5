#pragma once

#include <string>

namespace corvane {

/// Starts other programs, detached from this one. Both return an empty text, or why it did not work.
class Launcher {
public:
    virtual ~Launcher() = default;

    /// Runs a program file; the owner's execute bit is set first.
    virtual std::string start(const std::string& path) = 0;

    /// Shows an address with the desktop's program for it.
    virtual std::string open(const std::string& address) = 0;
};

}  // namespace corvane
