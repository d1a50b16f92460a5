#pragma once

#include <string>
#include <vector>

#include "run/EndTable.h"

namespace corvane {

/// What the operator has to know when a run has ended. Texts in UTF-8.
struct Verdict {
    using Kind = VerdictKind;

    Kind kind = Kind::untouched;
    std::string headline;
    std::vector<std::string> facts;    ///< the cause first
    std::vector<std::string> reasons;  ///< those of the facts that are no numbers, for a face that shows them apart
    std::vector<std::string> steps;    ///< what mends it, to be numbered
    std::string signedBy;              ///< the key of whoever answers for the image; empty when nobody does
    bool isSafeToUnplug = true;
    bool isUnplugged = false;
    bool callsForForce = false;  ///< the next run has to be a forced one

    /// "It is safe to unplug the device." or what to do instead; empty where there is nothing to unplug.
    std::string unplugText() const;
};

Verdict verdictFor(const Outcome& outcome);

/// All of it as lines, the steps numbered.
std::vector<std::string> verdictLines(const Verdict& verdict);

/// The same as one JSON object, without a line end.
std::string verdictJson(const Verdict& verdict);

/// "updated", "unconfirmed", "untouched", "waiting", "uncertain" or "handedOver".
std::string verdictName(Verdict::Kind kind);

}  // namespace corvane
