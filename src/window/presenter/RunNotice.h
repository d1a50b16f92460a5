#pragma once

#include <string>

#include "face/RunView.h"
#include "run/RunJournal.h"
#include "run/Verdict.h"

namespace corvane {

/// What a window says at its top: what to do, and from the start of a run on whether the device is still as it was.
/// UTF-8.
struct RunNotice {
    enum class Level { plain, safe, caution, danger };
    std::string text;
    Level level = Level::plain;
    std::string details{};  ///< more than there is room for, when asked
};

/// When the program has started: what to do, or which devices earlier runs have left in their boot loaders.
RunNotice noticeAtStart(const std::vector<InterruptedRun>& left);

/// During a run, or before the first one.
RunNotice noticeFor(RunPhase phase);

/// After a run.
RunNotice noticeFor(const Verdict& verdict);

/// The window's three steps: 1 what to install, 2 which device, 3 update.
int stepOf(RunPhase phase);

}  // namespace corvane
