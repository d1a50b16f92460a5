#pragma once

#include <array>
#include <optional>

#include "run/Outcome.h"

namespace corvane {

/// What an end is at a glance: the colour of the window's strip, and "kind" in --json.
enum class VerdictKind {
    updated,
    unconfirmed,  ///< programmed, and something about it is not known to be right
    untouched,    ///< the device runs what it ran before
    waiting,      ///< it sits in its boot loader
    uncertain,    ///< it may sit there, with its firmware whole
    handedOver,   ///< a newer program has taken over
};

/// What one end of a run means. Texts in UTF-8.
struct EndRow {
    RunEnd end{};
    int status = 1;  ///< the exit status that scripts rely on

    /// Why, without its full stop. "%" stands for the cause, which otherwise follows behind a colon.
    const char* sentence = "";

    /// What mends it, in this order; the rest are null.
    std::array<const char*, 5> steps{};

    const char* headline = nullptr;     ///< instead of the device's
    std::optional<VerdictKind> kind{};  ///< instead of the device's
    bool isUnplugged = false;           ///< the device's port is gone
    bool isJob = true;                  ///< it is a job on a device, for the record of jobs
};

/// What a state of the device means.
struct DeviceRow {
    DeviceState state{};
    VerdictKind kind{};
    const char* headline = "";
    bool isSafeToUnplug = true;  ///< without power nothing is lost that would be there otherwise
    bool isUnplugged = false;
    const char* note = nullptr;  ///< a sentence more, "%" being the port; null for none
};

/// There is a row for each.
const EndRow& rowOf(RunEnd end);
const DeviceRow& rowOf(DeviceState state);

inline int exitStatus(const Outcome& outcome) { return rowOf(outcome.end).status; }

VerdictKind kindOf(const Outcome& outcome);

}  // namespace corvane
