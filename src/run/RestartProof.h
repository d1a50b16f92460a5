#pragma once

#include "protocol/DeviceScanner.h"
#include "protocol/IspSession.h"

namespace corvane {

/// Finds out whether a device that was programmed and told to restart runs its application now. Logs nothing and owns
/// nothing. Takes some tenths of a second with a device that has started, and 8 s at most.
class RestartProof {
public:
    enum class Found {
        runs,       ///< it has said its version
        waits,      ///< its boot loader prompts, although it was told to restart three times
        silent,     ///< nothing answers
        outOfStep,  ///< it runs, but an answer came before that was not due: the memory may not be the image's
    };

    RestartProof(DeviceSession& session, DeviceScanner& scanner, IspSession& isp)
        : session_(session), scanner_(scanner), isp_(isp) {}

    /// The device on the session's port, which is at the boot loader's settings, was told to restart a moment ago; way
    /// is how it was found. The version is what it says now, in Windows-1252.
    Found find(const DeviceScanner::Way& way, std::string& version);

private:
    bool isReachable(const std::string& port, const std::string& settings);

    DeviceSession& session_;
    DeviceScanner& scanner_;
    IspSession& isp_;
};

}  // namespace corvane
