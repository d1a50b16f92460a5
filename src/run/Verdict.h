#pragma once

#include <optional>
#include <string>
#include <vector>

#include "run/RunReport.h"

namespace corvane {

/// What a device said when it was asked again after the run. Text in Windows-1252.
struct Proof {
    bool answered = false;
    std::string version;
};

/// What the operator has to know when a run has ended. Texts in UTF-8.
struct Verdict {
    enum class Kind {
        updated,
        untouched,   ///< the device runs what it ran before
        waiting,     ///< it sits in its boot loader
        uncertain,   ///< it may sit there, with its firmware whole
        handedOver,  ///< a newer program has taken over
    };

    Kind kind = Kind::untouched;
    std::string headline;
    std::vector<std::string> facts;
    std::vector<std::string> steps;  ///< what mends it, to be numbered
    bool isSafeToUnplug = true;
    bool isUnplugged = false;
    bool callsForForce = false;  ///< the next run has to be a forced one

    /// "It is safe to unplug the device." or what to do instead; empty where there is nothing to unplug.
    std::string unplugText() const;
};

/// The proof is missing when nobody asked the device again.
Verdict verdictFor(const RunReport& report, const std::optional<Proof>& proof);

/// All of it as lines, the steps numbered.
std::vector<std::string> verdictLines(const Verdict& verdict);

/// "updated", "untouched", "waiting", "uncertain" or "handedOver".
std::string verdictName(Verdict::Kind kind);

}  // namespace corvane
