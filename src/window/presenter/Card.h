#pragma once

#include <optional>
#include <string>
#include <vector>

#include "face/RunView.h"
#include "run/RunJournal.h"
#include "run/Verdict.h"
#include "settings/Choices.h"

namespace corvane {

/// What the window shows of its present state: one sentence, what stands below it, and what the large button does.
/// UTF-8.
struct Card {
    /// How it looks. Each has a symbol of its own, for nothing is told by its colour alone.
    enum class Tone { plain, busy, good, caution, danger };

    /// The line between the computer and the device in the window's drawing.
    enum class Cable { none, ready, moving, broken, done };

    Tone tone = Tone::plain;
    Cable cable = Cable::ready;
    std::string headline;
    std::vector<std::string> lines{};
    std::string unplug{};  ///< whether the device can be unplugged
    std::vector<std::string> steps{};
    bool isLarge = false;           ///< an end, or an alarm
    std::string start{}, force{};   ///< what both buttons do
    bool callsForForce = false;     ///< then the second one is the large one
    bool offersReport = false;      ///< of a run that did not end well
    bool callsForFile = false;      ///< a file is to be chosen before anything else
    std::string textBelow() const;  ///< everything but the headline, a line each, the steps numbered
};

/// Everything that decides what the card says.
struct WindowState {
    RunPhase phase = RunPhase::idle;
    bool isRunning = false;
    std::vector<InterruptedRun> left{};  ///< what the journal knows of
    std::optional<Verdict> verdict{};    ///< of the last run, as long as it still matters
    std::string rescueImage{};           ///< the path of what a rescue would install; empty when that is not there
    bool hasOffer = true;                ///< off line: something of firmware.inf lies in the Download folder
    bool hasPorts = true;                ///< some port or reader is there
    bool asksForAccount = false;         ///< on line without a user name
    int updated = 0;                     ///< devices, since the start of the program
};

Card cardFor(const WindowState& state, const Choices& choices);

/// Whether such a verdict is an alarm, which stands until the next run says something else.
bool isAlarm(const Verdict& verdict);

}  // namespace corvane
