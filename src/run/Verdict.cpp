#include "run/Verdict.h"

#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Steps = std::vector<std::string>;

Verdict::Kind kindOf(const RunReport& report) {
    if (report.end == RunEnd::updated) return Verdict::Kind::updated;
    if (report.end == RunEnd::handedOver) return Verdict::Kind::handedOver;
    if (report.isInBootLoader || report.wasErased) return Verdict::Kind::waiting;
    return report.maySitInBootLoader ? Verdict::Kind::uncertain : Verdict::Kind::untouched;
}

std::string headlineFor(Verdict::Kind kind, const RunReport& report) {
    switch (kind) {
        case Verdict::Kind::updated:
            return "The device is updated.";
        case Verdict::Kind::handedOver:
            return "The newer program has been started.";
        case Verdict::Kind::waiting:
            if (report.isErased) return "The device waits in its boot loader. It has no working firmware yet.";
            return report.wasErased ? "The device waits in its boot loader. Its firmware may be gone."
                                    : "The device waits in its boot loader. Its firmware is still there.";
        case Verdict::Kind::uncertain:
            return "The device may wait in its boot loader. Its firmware is still there.";
        case Verdict::Kind::untouched:
            break;
    }
    if (!report.bootLoaderPort.empty()) return "A device waits in its boot loader; nothing was changed.";
    if (report.end == RunEnd::noDevice && !report.cancelled) return "No device was found; nothing was changed.";
    return "The device was not changed.";
}

std::string duration(std::uint32_t milliseconds) {
    const auto seconds = (milliseconds + 500) / 1000;
    if (seconds < 60) return std::to_string(seconds) + " s";
    return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

/// Why it ended, where the log says no more than "NG".
std::string reasonFor(const RunReport& report) {
    const auto site = [&](const std::string& what) {
        return report.siteFailure ? what + ": " + report.siteFailure.words + "." : what + ".";
    };
    if (report.cancelled) return "The run was cancelled.";
    if (report.portLost && report.end != RunEnd::updated) {
        return toUtf8(report.port) + " was lost: it was unplugged, or its cable came loose.";
    }
    switch (report.end) {
        case RunEnd::loginFailed:
            return site("The login failed");
        case RunEnd::informationMissing:
            return site("firmware.inf could not be fetched");
        case RunEnd::imageMissing:
            return site("The image could not be had");
        case RunEnd::imageRefused:
            return "The image does not add up and was not installed.";
        case RunEnd::handOverFailed:
            return "The newer program does not start: " + report.failure + ".";
        case RunEnd::noDevice:
            return report.bootLoaderPort.empty()
                       ? "No device answered on any port."
                       : toUtf8(report.bootLoaderPort) + " answers with the prompt of a boot loader.";
        case RunEnd::declined:
            return "No image was chosen.";
        case RunEnd::nothingSuitable:
            return "None of the images is for this device.";
        case RunEnd::nothingListed:
            return "No image is on offer.";
        case RunEnd::notDefined:
            return "firmware.inf does not say what the chosen image is.";
        case RunEnd::noBootLoader:
            if (report.maySitInBootLoader)
                return "The device was asked to switch into its boot loader and did not confirm it.";
            return report.isInBootLoader
                       ? "The device agreed to switch, but its boot loader does not answer at the rates tried."
                       : "The device did not agree to switch into its boot loader.";
        case RunEnd::programmingFailed:
            return "Erasing or programming failed three times.";
        case RunEnd::failed:
            return "Something unexpected happened: " + report.failure + ".";
        case RunEnd::updated:
        case RunEnd::alreadyRunning:
        case RunEnd::handedOver:
            break;
    }
    return {};
}

/// Without power a boot loader whose firmware is whole starts that again; any other stays one.
bool isSafeToUnplug(const RunReport& report) {
    return report.end == RunEnd::updated ||
           !(report.wasErased || report.foundInBootLoader || !report.bootLoaderPort.empty());
}

Steps rescueSteps(const RunReport& report) {
    Steps steps;
    if (report.portLost) {
        steps.emplace_back("Plug it in again, and leave the device connected and powered.");
    } else if (!isSafeToUnplug(report)) {
        steps.emplace_back("Leave the device connected and powered.");
    }
    if (report.end == RunEnd::noBootLoader) {
        steps.emplace_back("Switch the device off and on. If it starts, it runs its old firmware: update it again.");
        steps.emplace_back(
            "If it does not start, force an update: the scan then takes the boot loader at the rate at which it "
            "answers.");
        steps.emplace_back(
            "If no scan finds it, the image may name another boot-loader rate (ISP_BAUDRATE): ask the maker.");
        return steps;
    }
    steps.emplace_back("Force an update (Force ISP, or --force on the console) with the same image.");
    steps.emplace_back("If it fails again, use another cable or USB port, without a hub, and force it once more.");
    steps.emplace_back("If it still fails, the image may not be sound: check it, or take another version.");
    return steps;
}

Steps siteSteps(const RunReport& report) {
    if (report.siteFailure.kind == SiteFailure::Kind::sessionClosed) return {"Start again."};
    if (report.end == RunEnd::loginFailed) {
        return {"Check server, user name and password.", "Check the network, and how the site is reached (Options).",
                "Without a site: go off line and use a local image."};
    }
    return {"Try again; the site may be busy.", "If it stays like this, tell whoever runs the site.",
            "Without a site: go off line and use a local image."};
}

Steps stepsFor(Verdict::Kind kind, const RunReport& report) {
    if (kind == Verdict::Kind::waiting || kind == Verdict::Kind::uncertain) return rescueSteps(report);
    if (report.cancelled) return {};
    switch (report.end) {
        case RunEnd::loginFailed:
        case RunEnd::informationMissing:
            return siteSteps(report);
        case RunEnd::imageMissing:
            if (report.siteFailure && report.siteFailure.kind != SiteFailure::Kind::notDownloaded)
                return siteSteps(report);
            return {"Check that the image is where it was, and choose it again."};
        case RunEnd::noDevice:
            if (!report.bootLoaderPort.empty()) {
                return {
                    "Leave the device connected and powered.",
                    "Force an update (Force ISP, or --force on the console): its boot loader is then taken, and every "
                    "image is offered.",
                    "Choose the image that is made for this device."};
            }
            return {"Check the device's power and its cable.", "Close other programs that use the port.",
                    "If the device does not start any more, force the update: its boot loader is then taken, too."};
        case RunEnd::nothingSuitable:
            return {"Check that the image is made for this product.",
                    "Only if you are sure: force the update; all images are offered then."};
        case RunEnd::imageRefused:
            return {"Fetch the image again, or ask its maker for a sound one.",
                    "corvane-cli check says what is wrong with it."};
        case RunEnd::notDefined:
            return {"Choose another image.", "If it stays like this, tell whoever runs the site."};
        case RunEnd::handOverFailed:
            return {"Start again and answer the question about the newer program with Cancel: this one still updates.",
                    "Tell whoever runs the site that the newer program does not start here."};
        case RunEnd::failed:
            return {"Start again.", "If it stays like this, save the log and ask the maker."};
        case RunEnd::nothingListed:
            return {"Go on line once, so that the list and the images are fetched, or choose a local file."};
        case RunEnd::noBootLoader:
            return {"Switch the device off and on and try again.", "If it wants a password, ask whoever set it."};
        default:
            return {};
    }
}

std::string proofFact(const RunReport& report, const Proof& proof) {
    if (!proof.answered) {
        return "The device did not answer when it was asked for its version again; switch it off and on, and scan for "
               "it.";
    }
    const auto text = "The device now answers with " + toUtf8(proof.version);
    if (report.version.empty() || containsNoCase(proof.version, report.version)) return text + ".";
    return text + "; the image's version is " + toUtf8(report.version) + ".";
}

Steps factsFor(Verdict::Kind kind, const RunReport& report, const std::optional<Proof>& proof) {
    Steps facts;
    if (const auto reason = reasonFor(report); !reason.empty()) facts.push_back(reason);
    if (report.newerProgram) {
        facts.push_back("The newer program could not be fetched: " + report.newerProgram.words + ". This one went on.");
    }
    if (!report.deviceVersion.empty()) {
        facts.push_back(toUtf8(report.port) + ": " + toUtf8(report.deviceVersion) + " before the run.");
    }
    if (!report.imagePath.empty()) {
        auto image = "Image: " + lastPart(report.imagePath);
        const auto name = std::string(trimmed(toUtf8(report.product + " " + report.version)));
        if (!name.empty()) image += ", " + name;
        facts.push_back(image + ", " + std::to_string(report.imageBytes) + " bytes, SHA-256 " + report.imageDigest +
                        ".");
    }
    if (kind == Verdict::Kind::updated && report.portLost) {
        facts.push_back(toUtf8(report.port) +
                        " was lost when the device was to restart; if it does not run, switch it off and on.");
    }
    if (kind == Verdict::Kind::updated && proof) facts.push_back(proofFact(report, *proof));
    if (report.wasErased) {
        facts.push_back(std::to_string(report.repeatedRecords) +
                        (report.repeatedRecords == 1 ? " record was repeated." : " records were repeated."));
    }
    if (report.milliseconds >= 1000) facts.push_back("It took " + duration(report.milliseconds) + ".");
    return facts;
}

}  // namespace

Verdict verdictFor(const RunReport& report, const std::optional<Proof>& proof) {
    Verdict verdict;
    verdict.kind = kindOf(report);
    verdict.headline = headlineFor(verdict.kind, report);
    verdict.facts = factsFor(verdict.kind, report, proof);
    verdict.steps = stepsFor(verdict.kind, report);
    verdict.isSafeToUnplug = isSafeToUnplug(report);
    verdict.isUnplugged = report.portLost;
    verdict.callsForForce = !verdict.isSafeToUnplug;
    return verdict;
}

std::string Verdict::unplugText() const {
    if (kind == Kind::handedOver || isUnplugged) return {};
    return isSafeToUnplug ? "It is safe to unplug the device."
                          : "Better leave the device plugged in; without power it stays in its boot loader and can "
                            "still be rescued.";
}

std::vector<std::string> verdictLines(const Verdict& verdict) {
    std::vector<std::string> lines = {verdict.headline};
    lines.insert(lines.end(), verdict.facts.begin(), verdict.facts.end());
    if (const auto text = verdict.unplugText(); !text.empty()) lines.push_back(text);
    for (std::size_t i = 0; i < verdict.steps.size(); ++i)
        lines.push_back(std::to_string(i + 1) + ". " + verdict.steps[i]);
    return lines;
}

std::string verdictName(Verdict::Kind kind) {
    switch (kind) {
        case Verdict::Kind::updated:
            return "updated";
        case Verdict::Kind::untouched:
            return "untouched";
        case Verdict::Kind::waiting:
            return "waiting";
        case Verdict::Kind::uncertain:
            return "uncertain";
        case Verdict::Kind::handedOver:
            break;
    }
    return "handedOver";
}

}  // namespace corvane
