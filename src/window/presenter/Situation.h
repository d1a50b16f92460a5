#pragma once

#include <functional>

#include "app/Updater.h"
#include "window/presenter/Card.h"

namespace corvane {

/// What the window knows of its present state, kept up to date by what the run and the operator do; the card follows
/// from it. It does not own the updater. Texts in UTF-8.
class Situation {
public:
    explicit Situation(Updater& updater) : updater_(updater) {}

    Card card() const { return cardFor(state_, updater_.choices); }

    /// Looks at the journal, the Download folder and the image for a rescue anew.
    void look();

    /// A run begins or has ended: what was said of the one before is over.
    void running(bool isRunning);
    void phase(RunPhase phase) { state_.phase = phase; }
    void conclude(const Outcome& outcome, const Verdict& verdict);

    /// Something else was chosen, or plugged in: what was said of the last device is over, unless it is an alarm.
    void changed();

    /// A device that was left is not named any more, and no alarm of the last run stands for it.
    void forgotten();

    /// The devices that were left, for as long as nothing runs.
    std::vector<InterruptedRun> left() const { return state_.isRunning ? std::vector<InterruptedRun>() : state_.left; }

    /// Something to say beside the card. Only the last few lines are shown; nothing is said twice.
    void say(const std::string& text);
    void forgetHints() { hints_.clear(); }
    std::string hints() const;

    /// The device that is at hand, or was at the last run: "COM1: TARN-R200 V5.1R23".
    const std::string& device() const { return device_; }
    void found(const RunFacts& facts);

    /// Its version as it said it, in Windows-1252.
    const std::string& deviceVersion() const { return deviceVersion_; }

    /// What is to be kept about the last run beside the card: numbers, digests.
    const std::vector<std::string>& facts() const { return facts_; }

    /// The path of the image that a rescue installs; empty when there is none at hand.
    const std::string& rescueImage() const { return state_.rescueImage; }

    /// The last run was a success, and nothing else was chosen since: the next device is another one of the same kind.
    bool isForNextDevice() const { return state_.verdict && state_.verdict->kind == Verdict::Kind::updated; }

    void hasPorts(bool has) { state_.hasPorts = has; }

private:
    std::string imageForRescue() const;

    Updater& updater_;
    WindowState state_;
    std::vector<std::string> hints_;  // since the run began, the oldest first
    std::vector<std::string> facts_;
    std::string device_, deviceVersion_;
    std::string lastImage_;  // the path of what the last run was to install
};

}  // namespace corvane
