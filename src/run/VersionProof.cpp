#include "run/VersionProof.h"

namespace corvane {

Proof VersionProof::ask(const RunFacts& device) {
    constexpr int kTries = 3;  // a restart takes a moment, and a silent device 3 s a question
    Proof proof;
    session_.cancel.begin();
    if (!scanner_.openAgain(device.portName, device.settings)) return proof;
    // A boot loader says nothing of the rate and the protocol of the firmware that it starts.
    if (device.protocolName.empty()) {
        proof.answered = scanner_.askVersionAtAnySetting(proof.version);
    } else {
        for (int i = 0; i < kTries && !proof.answered && !session_.cancel.isRequested(); ++i) {
            proof.answered = scanner_.askVersion(device.protocolName, proof.version);
        }
    }
    try {
        session_.comm->PortOpen(false);
    } catch (const RuntimeError&) {
        // The port was lost meanwhile; that changes nothing about the answer.
    }
    return proof;
}

}  // namespace corvane
