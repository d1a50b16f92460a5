#pragma once

#include <cstdint>
#include <string>

namespace corvane::fakes {

/// A pseudo-terminal whose far side the test plays. The near side has a path, and exists until unplug.
class PseudoTerminal {
public:
    PseudoTerminal();
    ~PseudoTerminal() { unplug(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    const std::string& path() const { return path_; }

    /// No echo even before anybody has opened the near side; otherwise it starts as a terminal does.
    void makeRaw() const;

    /// Puts bytes on the line; throws when they do not fit at once.
    void say(const std::string& bytes) const;

    /// All that has come in since the last call. Never waits.
    std::string heard() const;

    /// Bits a second, as set at the near side.
    std::uint32_t rate() const;

    /// Another rate than the near side asked for, as a driver with a coarse divider sets it.
    void setRate(std::uint32_t rate) const;

    void unplug();

private:
    int far_ = -1;
    std::string path_;
};

}  // namespace corvane::fakes
