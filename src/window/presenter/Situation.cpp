#include "window/presenter/Situation.h"

#include <algorithm>

#include "platform/files/Files.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {

void Situation::look() {
    const auto& choices = updater_.choices;
    state_.left = updater_.journal().left();
    state_.hasOffer = !choices.offLine || choices.useFile || !updater_.selection().list().empty();
    state_.asksForAccount = choices.userName.empty();
    state_.rescueImage = imageForRescue();
}

/// What was being installed when it went wrong; for an alarm of another kind, what is chosen.
std::string Situation::imageForRescue() const {
    const bool isAlarmed = state_.verdict && isAlarm(*state_.verdict);
    if (!isAlarmed && state_.left.empty()) return {};
    const auto& chosen = updater_.choices.image;
    const auto left = state_.left.empty() ? std::string() : state_.left.back().image;
    for (const auto& path : {isAlarmed ? lastImage_ : left, left, chosen.path()}) {
        if (FileExists(path)) return path;
    }
    return {};
}

void Situation::running(bool isRunning) {
    state_.isRunning = isRunning;
    if (!isRunning || updater_.series().isWaiting()) return;
    state_.verdict.reset();
    hints_.clear();
    facts_.clear();
    found({});
}

void Situation::conclude(const Outcome& outcome, const Verdict& verdict) {
    state_.verdict = verdict;
    state_.updated = updater_.jobs().updatedDevices();
    auto& reasons = state_.verdict->reasons;
    const bool isUpdated = verdict.kind == Verdict::Kind::updated;
    if (!isUpdated) reasons.insert(reasons.begin(), hints_.begin(), hints_.end());
    hints_.clear();
    facts_ = verdict.facts;
    lastImage_ = outcome.facts.image.path();
    found(isUpdated ? RunFacts() : outcome.facts);  // ready for the next one
    look();
}

void Situation::changed() {
    if (state_.isRunning) return;
    if (state_.verdict && !isAlarm(*state_.verdict)) {
        state_.verdict.reset();
        found({});
    }
    hints_.clear();
    look();
}

void Situation::forgotten() {
    state_.verdict.reset();
    found({});
    changed();
}

void Situation::say(const std::string& text) {
    constexpr std::size_t kKept = 20;
    if (std::find(hints_.begin(), hints_.end(), text) != hints_.end()) return;
    hints_.push_back(text);
    if (hints_.size() > kKept) hints_.erase(hints_.begin());
}

std::string Situation::hints() const {
    constexpr std::ptrdiff_t kShown = 3;
    const auto count = static_cast<std::ptrdiff_t>(hints_.size());
    return joined({hints_.end() - std::min(kShown, count), hints_.end()}, "\n");
}

void Situation::found(const RunFacts& facts) {
    deviceVersion_ = facts.deviceVersion;
    device_ = facts.deviceVersion.empty() ? std::string() : toUtf8(facts.port + ": " + facts.deviceVersion);
}

}  // namespace corvane
