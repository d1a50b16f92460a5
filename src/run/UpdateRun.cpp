#include "run/UpdateRun.h"

#include <algorithm>

#include "platform/files/Files.h"
#include "run/EndTable.h"
#include "site/References.h"
#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// How a run ends whose image has such a problem.
Ending endingFor(const ImageProblem& problem, const std::string& path) {
    if (problem.kind == ImageProblem::Kind::missing) return {RunEnd::imageNotThere, path};
    const auto words = lastPart(path) + " " + problem.words;
    if (problem.kind == ImageProblem::Kind::tooLarge) return {RunEnd::imageTooLarge, words};
    return {problem.kind == ImageProblem::Kind::empty ? RunEnd::imageEmpty : RunEnd::imageUnreadable, words};
}

}  // namespace

Outcome UpdateRun::run(bool force) {
    if (isRunning_) {
        Outcome refused;
        refused.end = RunEnd::alreadyRunning;
        return refused;
    }
    outcome_ = {};
    const auto start = p_.session.runtime.tick();
    Ending ending;
    try {
        const BusyScope busy(p_.session);
        begin();
        ending = steps(force);
        if (ending.end != RunEnd::handedOver) fillLinks();
    } catch (const std::exception& error) {
        const bool isOnItsWay = rowOf(outcome_.device).kind != VerdictKind::untouched;
        ending = {isOnItsWay ? RunEnd::failedMidway : RunEnd::failed, error.what()};
    }
    end(ending, start);
    return outcome_;
}

void UpdateRun::begin() {
    isRunning_ = true;
    information_ = {};
    p_.inf.forget();
    auto& session = p_.session;
    session.manualPort = false;
    session.ispBaudRate = -1;
    p_.view.running(true);
    session.cancel.begin();
    p_.view.cancellable(true);
    session.log.clear();
    p_.view.links({});
    letEventsRun();
}

Ending UpdateRun::steps(bool force) {
    if (!p_.choices.offLine && !p_.site.resume()) {
        if (auto ending = p_.online.enter(outcome_.facts.remarks)) return *ending;
    }
    return withDevice(force);
}

Ending UpdateRun::withDevice(bool force) {
    auto& session = p_.session;
    p_.view.phase(RunPhase::scan);
    session.log.clear();
    bool inIsp = false;
    const auto version = p_.scanner.DeviceScan(inIsp, force);
    if (version.empty()) {
        log("Can not found any device on comm port!!\r\n");
        if (!p_.scanner.bootLoaderPort().empty()) outcome_.device = DeviceState::leftInBootLoader;
        return noDevice();
    }
    session.log.clear();
    p_.view.links({});
    letEventsRun();
    noteDevice(version, inIsp);
    std::string chosen = version;
    if (auto ending = select(force, inIsp, chosen)) return *ending;
    if (!defineFirmware(chosen)) {
        log("Firmware download fail!!(Not define)\r\n");
        return {RunEnd::notDefined};
    }
    outcome_.facts.product = information_.product;
    outcome_.facts.version = information_.version;
    showFirmware();
    return withImage();
}

Ending UpdateRun::noDevice() const {
    const auto& scanner = p_.scanner;
    if (!scanner.bootLoaderPort().empty()) return {RunEnd::bootLoaderSeen, toUtf8(scanner.bootLoaderPort())};
    if (scanner.portCount().found == 0) {
        const auto& only = scanner.onlyPort();
        return {RunEnd::noPort, only.empty() ? std::string() : toUtf8(only) + " is not there"};
    }
    if (scanner.portCount().opened == 0) return {RunEnd::noPortOpened};
    return {RunEnd::noDevice, scanner.unreadable()};
}

/// What the scan has found, for the verdict and for the log.
void UpdateRun::noteDevice(const std::string& version, bool inIsp) {
    auto& facts = outcome_.facts;
    outcome_.device = inIsp ? DeviceState::leftInBootLoader : DeviceState::application;
    facts.deviceVersion = version;
    facts.portName = p_.session.comm->CommPort();
    facts.settings = p_.session.comm->Settings();
    if (!inIsp) facts.protocolName = p_.session.protocolName;
    facts.port = p_.ports.name();
    facts.place = p_.ports.place();
    log("[Local Site]\r\n");
    logText("Comm Port : ", facts.port, "\r\n");
    logText("Device F/W: ", version, "\r\n\r\n");
    letEventsRun();
}

/// A text that a device or a site wrote. It stays in its line, or it could say there what this program says.
void UpdateRun::logText(const char* label, std::string text, const char* end) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    log(label + text + end);
}

/// Nothing when an image was chosen; its section and version are in the text then.
std::optional<Ending> UpdateRun::select(bool force, bool inIsp, std::string& chosen) {
    if (p_.session.cancel.isRequested()) {
        log("Cancel Update!!!\r\n");
        return Ending{RunEnd::cancelled};
    }
    p_.view.phase(RunPhase::selection);
    auto& facts = outcome_.facts;
    const auto withheld = p_.selection.withheld();
    if (!withheld.empty()) p_.view.advice(withheld);
    switch (p_.selection.SelectFirmware(chosen, facts.port, facts.deviceVersion, force, inIsp)) {
        case SelectionEnd::chosen:
            facts.vouching = p_.selection.vouching();
            return std::nullopt;
        case SelectionEnd::cancelled:
            return Ending{RunEnd::declined};
        case SelectionEnd::nothingSuitable:
            return Ending{RunEnd::nothingSuitable};
        case SelectionEnd::nothingListed:
            break;
    }
    if (!p_.inf.distrust().empty()) return Ending{RunEnd::listNotBelieved, p_.inf.distrust()};
    if (!withheld.empty()) facts.remarks.push_back(withheld);
    if (!p_.choices.offLine) return Ending{RunEnd::nothingListed};
    return Ending{RunEnd::nothingDownloaded, FileExists(p_.folder.resolve("\\firmware.inf"))
                                                 ? "none of those in firmware.inf lies in the Download folder"
                                                 : "there is no firmware.inf yet"};
}

bool UpdateRun::defineFirmware(const std::string& chosen) {
    if (p_.choices.isLocalFile()) {
        const auto& info = p_.choices.image.info();
        information_.product = info.program;
        information_.version = info.version;
        information_.updateInfo = info.description();
        return true;
    }
    const bool defined = FTP_CheckFirmware(p_.inf, p_.session.log, chosen, information_);
    p_.session.ispBaudRate = information_.ispBaudRate;
    return defined;
}

void UpdateRun::showFirmware() {
    log("[FTP Site]\r\n");
    logText("Product   : ", information_.product, "\r\n");
    logText("Version   : ", information_.version, "\r\n\r\n");
    log("[Update Information]\r\n");
    log(information_.updateInfo + "\r\n");
    letEventsRun();
    log("\r\n");
}

Ending UpdateRun::withImage() {
    p_.view.phase(RunPhase::image);
    auto ending = takeImage();
    if (ending) {
        log("Firmware download fail!!\r\n");
        return *ending;
    }
    if (!isImageWanted()) return {RunEnd::imageRefused};
    if (!isForThisDevice()) return {RunEnd::declined, "that one is for another device"};
    if ((ending = remember())) return *ending;
    return p_.installation.install(p_.choices.promise, outcome_);
}

/// Gets the image: the local file as it was read before the run, else a copy in the Download folder, read once for its
/// digest, the question and the device. One without any data (a server's error page, say) is refused, since it would
/// leave a device erased. Nothing when there is an image that can be installed, else why not.
std::optional<Ending> UpdateRun::takeImage() {
    auto& image = outcome_.facts.image;
    const auto& choices = p_.choices;
    std::optional<Ending> ending;
    if (!choices.useFile || choices.image.isNone()) {
        ending = fetchImage();
    } else if (choices.imageProblem) {
        ending = endingFor(choices.imageProblem, choices.image.path());
    } else {
        image = choices.image;
    }
    disableCancel();
    if (!ending && p_.session.cancel.isRequested()) {
        image = {};
        return Ending{RunEnd::cancelled};
    }
    if (!ending && image.emptiness()) return endingFor(image.emptiness(), image.path());
    return ending;
}

std::optional<Ending> UpdateRun::fetchImage() {
    ImageOrProblem loaded;
    // What is read here is what was fetched: another program may put another file in its place at any moment.
    const auto read = [&](const std::string& fetched, const std::string& place) {
        loaded = loadImage(fetched, p_.digest, {.mostBytes = p_.choices.mostImageBytes, .knownAs = place});
        return loaded.image ? digestFault(*loaded.image) : std::string();
    };
    const auto path = p_.site.FTP_DownloadFirmware(information_.firmwareFile, read);
    const auto& failure = p_.site.failure();
    switch (failure.kind) {
        case SiteFailure::Kind::none:
            if (!loaded.image) return endingFor(loaded.problem, path);
            outcome_.facts.image = *loaded.image;
            return std::nullopt;
        case SiteFailure::Kind::sessionClosed:
            return Ending{RunEnd::sessionClosed};
        case SiteFailure::Kind::wrongContent:
            return Ending{RunEnd::imageNotTheOne, failure.words};
        case SiteFailure::Kind::notDownloaded:
            return Ending{RunEnd::imageNotThere, failure.words};
        case SiteFailure::Kind::tooLong:
            return Ending{RunEnd::imageTooLarge, toUtf8(lastPart(information_.firmwareFile)) + " is larger than " +
                                                     byteCount(static_cast<std::int64_t>(p_.choices.mostImageBytes))};
        case SiteFailure::Kind::oldFileStays:
            return Ending{RunEnd::oldFileStays, "The image could not be had: " + failure.words};
        case SiteFailure::Kind::notStored:
            return Ending{RunEnd::notStored, "The image could not be had: " + failure.words};
        default:
            return Ending{RunEnd::imageNotFetched, failure.words};
    }
}

/// Asks before an image that does not add up harms the device.
bool UpdateRun::isImageWanted() {
    constexpr std::size_t kMostFindings = 8;
    const auto findings = findingLines(outcome_.facts.image.report().findings, kMostFindings);
    return findings.empty() ||
           p_.prompts.messageBox(Question::unsoundImage, "This image does not add up:\r\n" + joined(findings, "\r\n") +
                                                             "\r\nInstall it all the same?");
}

/// Where several devices wait for their rescue, each for its own image, the one at hand may be the wrong one.
bool UpdateRun::isForThisDevice() {
    const auto other = p_.installation.confusedWith(outcome_);
    return !other || p_.prompts.messageBox(Question::otherDevices,
                                           fromUtf8("The device that was left at " + other->brief() + ", waits for " +
                                                    lastPart(other->image) + ". " + outcome_.facts.image.name() +
                                                    " is the image of another one.\r\nInstall it all the same?"));
}

/// Before the device leaves its application the journal knows of it, or the operator that it does not. Nothing when the
/// run goes on.
std::optional<Ending> UpdateRun::remember() {
    const auto problem = p_.installation.remember(outcome_);
    if (problem.empty()) return std::nullopt;
    const auto& path = p_.installation.journalPath();
    const bool goesOn = p_.prompts.messageBox(
        Question::noJournal,
        fromUtf8("The journal of devices without firmware, " + path + ", could not be written: " + problem +
                 ".\r\nIf the program or the computer fails meanwhile, the next start will not "
                 "know of this device.\r\nInstall the image all the same?"));
    if (!goesOn) return Ending{RunEnd::notRemembered, path + ": " + problem};
    outcome_.facts.remarks.push_back("The journal " + path + " could not be written (" + problem +
                                     "): had the program or the computer failed meanwhile, the next start would not "
                                     "have known of this device.");
    return std::nullopt;
}

/// Why a fetched image is not the one that the site announces; empty when it is, or when the site does not say.
std::string UpdateRun::digestFault(const Image& image) const {
    if (information_.isSigned && information_.digest.empty()) return "the signed firmware.inf gives no SHA256 for it";
    if (information_.digest.empty() || image.sha256() == information_.digest) return {};
    return "its SHA-256 is " + image.sha256() + ", but firmware.inf says " + toUtf8(information_.digest);
}

void UpdateRun::fillLinks() {
    disableCancel();
    if (!information_.isKnown() || outcome_.facts.deviceVersion.empty()) return;
    std::vector<ReferenceLink> links;
    for (int i = 1; i <= FirmwareInformation::kLinks; ++i) {
        const auto& title = information_.linkTitle[static_cast<std::size_t>(i - 1)];
        if (!title.empty()) links.push_back({i, title, referenceKind(linkTarget(i)) != ReferenceKind::none});
    }
    p_.view.links(links);
}

/// Always the last step. A cancel was possible only as long as nothing was done to the device, so it is the cause
/// whatever followed from it.
void UpdateRun::end(const Ending& ending, std::uint32_t start) {
    const bool isCancelled = p_.session.cancel.wasRequested() && ending.end != RunEnd::handedOver;
    outcome_.end = isCancelled ? RunEnd::cancelled : ending.end;
    if (!isCancelled) outcome_.cause = ending.cause;
    if (outcome_.device == DeviceState::application && p_.ports.isLost()) outcome_.device = DeviceState::gone;
    p_.session.cancel.end();
    p_.view.cancellable(false);
    p_.ports.close(p_.view);
    outcome_.facts.milliseconds = p_.session.runtime.tick() - start;
    isRunning_ = false;
    p_.view.phase(RunPhase::idle);
    p_.view.running(false);
}

/// From here on nothing interrupts.
void UpdateRun::disableCancel() {
    p_.session.cancel.disable();
    p_.view.cancellable(false);
}

void UpdateRun::cancel() {
    if (!isCancellable()) return;
    p_.session.cancel.request();
    p_.site.cancel();
}

void UpdateRun::jumpToPort(int index) {
    p_.session.manualPort = true;
    p_.session.manualPortIndex = static_cast<std::int16_t>(index);
}

std::string UpdateRun::linkTarget(int index) const {
    if (index < 1 || index > FirmwareInformation::kLinks) return {};
    return information_.linkUrl[static_cast<std::size_t>(index - 1)];
}

}  // namespace corvane
