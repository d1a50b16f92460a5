#pragma once

#include "protocol/DeviceScanner.h"
#include "run/Outcome.h"

namespace corvane {

/// Asks a device that was just updated which version it runs now: opens the port of the run once more, at the same
/// settings, and asks until the device has started. Logs nothing. The port is closed afterwards.
class VersionProof {
public:
    VersionProof(DeviceSession& session, DeviceScanner& scanner) : session_(session), scanner_(scanner) {}

    /// For a run that updated its device; takes some seconds at most.
    [[nodiscard]] Proof ask(const RunFacts& device);

private:
    DeviceSession& session_;
    DeviceScanner& scanner_;
};

}  // namespace corvane
