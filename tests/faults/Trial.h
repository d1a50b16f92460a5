#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvane::faults {

/// A kind of device and the way to it.
struct Setup {
    const char* name;
    bool isTarn;
    std::uint32_t baud, bootBaud;
    bool wantsPassword;
    bool isOnLine;
};

extern const std::vector<Setup> kSetups;

/// One update with what goes wrong in it.
struct Trial {
    std::size_t setup = 0;
    std::vector<std::string> faults;       ///< of the device and its line
    std::optional<std::int64_t> killedAt;  ///< ms: the program is gone from then on, and a fresh one is started
    std::string siteFault;                 ///< "missing PATH", "stall PATH", "cut PATH"; empty for none

    std::string text() const;
};

/// How much there is to go wrong in a run without faults.
struct Extent {
    std::uint32_t replies = 0;
    std::size_t bytes = 0;
    std::int64_t ms = 0;
};
Extent extentOf(std::size_t setup);

/// Runs it in virtual time and holds it against the rule: the run ends and says what happened; status and verdict agree
/// with the device's true state; nothing partial is left on disk; a next run brings the device back. Empty when it
/// holds.
std::string violation(const Trial& trial);

}  // namespace corvane::faults
