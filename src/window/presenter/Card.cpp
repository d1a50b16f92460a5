#include "window/presenter/Card.h"

#include <algorithm>

#include "platform/ProgramInfo.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Tone = Card::Tone;
using Cable = Card::Cable;

/// A caption shows "&" as the key of the letter behind it.
std::string inCaption(const std::string& text) { return replaceAll(text, "&", "&&"); }

void setButtons(Card& card, const WindowState& state, const Choices& choices) {
    const auto& image = choices.image;
    card.force = state.rescueImage.empty() ? "Fo&rce ISP" : "&Rescue with " + inCaption(lastPart(state.rescueImage));
    if (state.verdict && state.verdict->kind == Verdict::Kind::updated) {
        card.start = "Ne&xt device";
    } else if (choices.isLocalFile() && !image.isNone()) {
        const auto version = toUtf8(image.info().version);
        card.start = "In&stall " + inCaption(version.empty() ? image.name() : version);
    } else {
        card.start = "&Search for the device";
    }
}

std::string countLine(int updated) {
    return updated == 1 ? "1 device is updated." : std::to_string(updated) + " devices are updated.";
}

Card runningCard(RunPhase phase, int updated) {
    if (phase == RunPhase::removal)
        return {
            Tone::good,
            Cable::done,
            "The device is updated. Take it off and connect the next one.",
            {countLine(updated), "The next one is updated in the same way as soon as it answers. Cancel ends this."}};
    if (phase == RunPhase::nextDevice)
        return {Tone::plain,
                Cable::none,
                "Connect the next device.",
                {countLine(updated), "It is updated in the same way as soon as it answers. Cancel ends this."}};
    if (phase == RunPhase::proof)
        return {Tone::good, Cable::moving, "The device is programmed. It is asked whether it runs."};
    if (phase == RunPhase::erase || phase == RunPhase::program || phase == RunPhase::reset)
        return {Tone::caution, Cable::moving, "Do not unplug the device, and do not switch it or this computer off."};
    return {Tone::busy, Cable::ready, "Nothing on the device has changed yet."};
}

/// A step that both faces give, in the words of this one.
std::string inWindow(std::string step, const std::string& rescueImage) {
    const std::string common = "Force an update (Force ISP, or --force on the console)";
    const auto button = rescueImage.empty() ? std::string("Force ISP") : "Rescue with " + lastPart(rescueImage);
    if (step.starts_with(common)) step.replace(0, common.size(), "Press \"" + button + "\" to force an update");
    return step;
}

/// Devices that wait for their rescue, whatever else the last run has said.
Card alarmCard(const WindowState& state) {
    constexpr std::size_t kShown = 3;
    const auto& left = state.left;
    const auto count = std::to_string(left.size());
    // One that was cut off before the erase, or behind the last record, has firmware.
    const bool isFirmwareThere = left.size() == 1 && left[0].firmware != InterruptedRun::Firmware::none;
    Card card{Tone::danger, Cable::broken,
              isFirmwareThere    ? "An update was cut off; the device may be in its boot loader."
              : left.size() == 1 ? "A device was left in its boot loader, without working firmware."
                                 : count + " devices were left in their boot loaders, without working firmware."};
    if (state.verdict) {
        card.lines.push_back(state.verdict->headline);
        card.lines.insert(card.lines.end(), state.verdict->reasons.begin(), state.verdict->reasons.end());
    }
    for (std::size_t i = 0; i < std::min(kShown, left.size()); ++i)
        card.lines.push_back(left[i].brief() + ", " + lastPart(left[i].image));
    if (left.size() > kShown) card.lines.back() += ", and " + std::to_string(left.size() - kShown) + " more";
    card.steps = {isFirmwareThere ? "Switch the device off and on: if it starts, all is well."
                                  : "Connect the device, and leave it connected and powered.",
                  state.rescueImage.empty() ? "Choose the image made for it, and force the update."
                                            : "Rescue it with " + lastPart(state.rescueImage) + "."};
    if (state.verdict) {
        for (const auto& step : state.verdict->steps) card.steps.push_back(inWindow(step, state.rescueImage));
    }
    card.callsForForce = true;
    return card;
}

Card verdictCard(const Verdict& verdict, const std::string& rescueImage) {
    Card card{Tone::plain, Cable::ready, verdict.headline, verdict.reasons, verdict.unplugText(), verdict.steps};
    for (auto& step : card.steps) step = inWindow(step, rescueImage);
    // Where nothing was done, or no device found, it is no news that it can be unplugged.
    if (verdict.kind == Verdict::Kind::untouched && verdict.isSafeToUnplug) card.unplug.clear();
    switch (verdict.kind) {
        case Verdict::Kind::updated:
            card.tone = Tone::good;
            card.cable = Cable::done;
            break;
        case Verdict::Kind::unconfirmed:
            card.tone = Tone::caution;
            break;
        case Verdict::Kind::uncertain:
        case Verdict::Kind::waiting:
            card.tone = Tone::danger;
            card.cable = Cable::broken;
            break;
        case Verdict::Kind::untouched:
        case Verdict::Kind::handedOver:
            if (verdict.steps.empty()) break;  // cancelled: nothing is to be mended
            card.tone = verdict.callsForForce ? Tone::danger : Tone::caution;
            card.cable = Cable::broken;
            break;
    }
    card.callsForForce = verdict.callsForForce;
    return card;
}

/// What is known before anything is searched.
Card readyCard(const WindowState& state, const Choices& choices) {
    const auto cable = state.hasPorts ? Cable::ready : Cable::none;
    const bool wantsFile = choices.isLocalFile() && choices.image.isNone();
    if (choices.refusal.problem) {
        Card card{Tone::caution,
                  cable,
                  lastPart(choices.refusal.path) + " cannot be installed.",
                  {"The file " + choices.refusal.problem.words + "."}};
        card.lines.push_back(choices.image.isNone() ? "Choose another one."
                                                    : choices.image.name() + " is still the one to be installed.");
        return card;
    }
    if (wantsFile) {
        Card card{Tone::plain, cable, "Choose the file to install, or drop it here."};
        card.callsForFile = true;
        return card;
    }
    if (choices.isLocalFile() && !choices.image.report().findings.empty()) {
        constexpr std::size_t kMostFindings = 3;
        return {Tone::caution, cable, choices.image.name() + " does not add up.",
                findingLines(choices.image.report().findings, kMostFindings)};
    }
    if (choices.offLine && !choices.useFile && !state.hasOffer) {
        return {Tone::caution,
                cable,
                "There is no firmware on this computer yet.",
                {"Nothing that firmware.inf offers lies in the Download folder. Go on line once, or choose a local "
                 "file."}};
    }
    if (!state.hasPorts)
        return {Tone::plain,
                cable,
                "Plug in your device.",
                {"There is no serial port and no reader on this computer. An adapter shows here as soon as it is "
                 "plugged in.",
                 "To practise without one: rehearse an update (Help)."}};
    if (state.asksForAccount && !choices.offLine) {
        return {Tone::plain,
                cable,
                "Enter the account for the maker's site.",
                {accountHint(), "Without one: go off line and choose a file, or rehearse an update (Help)."}};
    }
    return {Tone::plain, cable, "Ready. Nothing is installed before you agree."};
}

}  // namespace

bool isAlarm(const Verdict& verdict) {
    return verdict.callsForForce || verdict.kind == Verdict::Kind::waiting || verdict.kind == Verdict::Kind::uncertain;
}

Card cardFor(const WindowState& state, const Choices& choices) {
    Card card;
    if (state.isRunning) {
        card = runningCard(state.phase, state.updated);
    } else if (state.verdict && isAlarm(*state.verdict)) {
        card = verdictCard(*state.verdict, state.rescueImage);
        if (state.left.size() > 1)
            card.lines.push_back(std::to_string(state.left.size()) + " devices wait for their rescue by now.");
    } else if (!state.left.empty()) {
        card = alarmCard(state);
    } else if (state.verdict) {
        card = verdictCard(*state.verdict, state.rescueImage);
        if (card.tone == Tone::good && state.updated > 1) card.lines.push_back(countLine(state.updated));
    } else {
        card = readyCard(state, choices);
    }
    const bool isWaiting = state.phase == RunPhase::removal || state.phase == RunPhase::nextDevice;
    card.isLarge = state.isRunning ? isWaiting : state.verdict || !state.left.empty();
    using Kind = Verdict::Kind;
    card.offersReport = !state.isRunning && state.verdict && state.verdict->kind != Kind::updated &&
                        state.verdict->kind != Kind::handedOver && !state.verdict->steps.empty();
    setButtons(card, state, choices);
    return card;
}

std::string Card::textBelow() const {
    auto text = lines;
    if (!unplug.empty()) text.push_back(unplug);
    for (std::size_t i = 0; i < steps.size(); ++i) text.push_back(std::to_string(i + 1) + ". " + steps[i]);
    return joined(text, "\n");
}

}  // namespace corvane
