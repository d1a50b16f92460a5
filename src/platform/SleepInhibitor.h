#pragma once

#include <string>

namespace corvane {

/// Keeps the computer from sleeping and shutting down. Both return at once; where the system knows no such thing they
/// do nothing.
class SleepInhibitor {
public:
    virtual ~SleepInhibitor() = default;

    /// From now on; the reason (UTF-8) is what the system shows to people. A second hold changes nothing.
    virtual void hold(const std::string& reason) = 0;
    virtual void release() = 0;
};

/// For programs without a desktop.
class NoInhibitor : public SleepInhibitor {
public:
    void hold(const std::string& /*reason*/) override {}
    void release() override {}
};

}  // namespace corvane
