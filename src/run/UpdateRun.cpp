#include "run/UpdateRun.h"

#include <algorithm>

#include "image/ImageCheck.h"
#include "platform/Files.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {

RunReport UpdateRun::run(bool force) {
    if (isRunning_) {
        RunReport refused;
        refused.end = RunEnd::alreadyRunning;
        return refused;
    }
    report_ = {};
    const auto start = p_.session.runtime.tick();
    try {
        const BusyScope busy(p_.session);
        begin();
        report_.end = steps(force);
        if (report_.end != RunEnd::handedOver) fillLinks();
    } catch (const std::exception& error) {
        report_.end = RunEnd::failed;
        report_.failure = error.what();
    }
    report_.cancelled = cancelRequested_;
    report_.product = information_.product;
    report_.version = information_.version;
    report_.repeatedRecords = p_.programmer.repeatedRecords();
    if (!p_.choices.offLine) report_.siteProblem = p_.site.problem();
    report_.portLost = !report_.portName.empty() && !p_.session.comm->PortOpen();
    closePorts();
    report_.milliseconds = p_.session.runtime.tick() - start;
    isRunning_ = false;
    p_.view.phase(RunPhase::idle);
    p_.view.running(false);
    return report_;
}

void UpdateRun::begin() {
    isRunning_ = true;
    information_ = {};
    inIsp_ = false;
    cancelRequested_ = false;
    auto& session = p_.session;
    session.stop = session.cancel = session.manualPort = false;
    session.ispBaudRate = -1;
    p_.programmer.beginDevice();
    p_.isp.beginDevice();
    p_.view.running(true);
    setCancellable(true);
    session.log.clear();
    p_.view.links({});
    letEventsRun();
}

RunEnd UpdateRun::steps(bool force) {
    if (!p_.choices.offLine && !p_.site.isConnected()) {
        RunEnd end{};
        if (!goOnline(end)) return end;
    }
    return withDevice(force);
}

/// Login, firmware.inf, the check for a newer program. True when the run goes on; else how it ended.
bool UpdateRun::goOnline(RunEnd& end) {
    p_.view.phase(RunPhase::login);
    if (!p_.site.login()) {
        end = RunEnd::loginFailed;
        return false;
    }
    p_.view.phase(RunPhase::information);
    if (!p_.site.FTP_Download("/firmware/firmware.inf", p_.folder.resolve("\\firmware.inf"))) {
        p_.site.disconnect();
        end = RunEnd::informationMissing;
        return false;
    }
    if (p_.selfUpdate.CheckNewVersion()) {
        end = handOver();
        return false;
    }
    // The idle watch may have closed the session while the operator thought about the question.
    end = RunEnd::loginFailed;
    return p_.site.isConnected();
}

RunEnd UpdateRun::handOver() {
    p_.site.disconnect();
    log(" Disconnected...\r\n");
    log(" Install New Corvane...\r\n");
    report_.failure = p_.launcher.start(p_.selfUpdate.newProgram());
    return report_.failure.empty() ? RunEnd::handedOver : RunEnd::handOverFailed;
}

RunEnd UpdateRun::withDevice(bool force) {
    auto& session = p_.session;
    p_.view.phase(RunPhase::scan);
    session.log.clear();
    report_.deviceVersion = p_.scanner.DeviceScan(inIsp_, force);
    if (report_.deviceVersion.empty()) {
        log("Can not found any device on comm port!!\r\n");
        report_.bootLoaderPort = p_.scanner.bootLoaderPort();
        return RunEnd::noDevice;
    }
    session.log.clear();
    p_.view.links({});
    letEventsRun();
    report_.foundInBootLoader = inIsp_;
    report_.portName = session.comm->CommPort();
    report_.settings = session.comm->Settings();
    report_.protocolName = session.protocolName;
    report_.port = portName();
    showDevice(report_.port);

    p_.view.phase(RunPhase::selection);
    std::string chosen = report_.deviceVersion;
    switch (p_.selection.SelectFirmware(chosen, report_.port, report_.deviceVersion, force, inIsp_)) {
        case SelectionEnd::chosen:
            break;
        case SelectionEnd::cancelled:
            return RunEnd::declined;
        case SelectionEnd::nothingSuitable:
            return RunEnd::nothingSuitable;
        case SelectionEnd::nothingListed:
            return RunEnd::nothingListed;
    }
    if (!defineFirmware(chosen)) {
        log("Firmware download fail!!(Not define)\r\n");
        return RunEnd::notDefined;
    }
    showFirmware();
    return install(fetchImage());
}

/// The port's name; behind a HID reader's its own firmware version.
std::string UpdateRun::portName() {
    const auto name = p_.session.comm->CommPort();
    const auto text = p_.reader.deviceText();
    if (name.empty() || text.compare(0, name.size(), name) != 0) return name;
    return name + " (F/W:" + p_.reader.firmwareText() + ")";
}

void UpdateRun::showDevice(const std::string& port) {
    log("[Local Site]\r\n");
    log("Comm Port : " + port + "\r\n");
    log("Device F/W: " + report_.deviceVersion + "\r\n\r\n");
    letEventsRun();
}

bool UpdateRun::defineFirmware(const std::string& chosen) {
    if (p_.choices.isLocalFile()) {
        information_.product = p_.choices.image.program;
        information_.version = p_.choices.image.version;
        information_.updateInfo = p_.choices.image.description();
        return true;
    }
    const bool defined = FTP_CheckFirmware(p_.inf, p_.folder, p_.session.log, chosen, information_);
    p_.session.ispBaudRate = information_.ispBaudRate;
    return defined;
}

void UpdateRun::showFirmware() {
    log("[FTP Site]\r\n");
    log("Product   : " + information_.product + "\r\n");
    log("Version   : " + information_.version + "\r\n\r\n");
    log("[Update Information]\r\n");
    log(information_.updateInfo + "\r\n");
    letEventsRun();
    log("\r\n");
}

std::string UpdateRun::fetchImage() {
    p_.view.phase(RunPhase::image);
    const auto& choices = p_.choices;
    const bool isLocal = choices.useFile && !choices.image.path.empty();
    if (isLocal) return choices.image.path;
    return p_.site.FTP_DownloadFirmware(information_.firmwareFile,
                                        [this](const std::string& path) { return digestFault(path); });
}

RunEnd UpdateRun::install(const std::string& image) {
    setCancellable(false);
    if (!FileExists(image) || cancelRequested_ || !isImage(image)) {
        log("Firmware download fail!!\r\n");
        return RunEnd::imageMissing;
    }
    if (!isImageWanted()) return RunEnd::imageRefused;
    report_.wasSwitched = true;
    report_.isInBootLoader = inIsp_;
    if (!inIsp_) {
        p_.view.phase(RunPhase::bootLoader);
        const bool seen = p_.isp.GoToISP();
        report_.isInBootLoader = p_.isp.lastSwitch() == IspSession::Switch::accepted;
        report_.maySitInBootLoader = p_.isp.lastSwitch() == IspSession::Switch::unanswered;
        if (!seen) {
            log("Can't enter ISP Mode!!\r\n");
            return RunEnd::noBootLoader;
        }
    }
    log("\r\n[ISP Mode]\r\n");
    openJournal();
    if (!eraseAndProgram(image)) return RunEnd::programmingFailed;
    p_.view.phase(RunPhase::reset);
    p_.isp.ISP_Reset();
    p_.isp.wait_output_empty(250);
    p_.session.runtime.Sleep(250);
    closeJournal();
    letEventsRun();  // whoever pressed something meanwhile is still told that it came too late
    return RunEnd::updated;
}

/// Reads the image, for the verdict too. One without any data, a server's error page say, would leave a device erased.
bool UpdateRun::isImage(const std::string& image) {
    report_.imagePath = image;
    const auto content = readFile(image);
    report_.imageBytes = content.size();
    report_.imageDigest = p_.digest.sha256(content);
    checked_ = checkImage(content);
    report_.imageRecords = static_cast<std::int64_t>(checked_.records);
    return checked_.bytes > 0;
}

/// Asks before an image that does not add up harms the device.
bool UpdateRun::isImageWanted() {
    constexpr std::size_t kMostFindings = 8;
    const auto findings = findingLines(checked_.findings, kMostFindings);
    return findings.empty() ||
           p_.prompts.messageBox(Question::unsoundImage, "This image does not add up:\r\n" + joined(findings, "\r\n") +
                                                             "\r\nInstall it all the same?");
}

/// Why a fetched image is not the one that the site announces; empty when it is, or when the site does not say.
std::string UpdateRun::digestFault(const std::string& path) {
    if (information_.digest.empty()) return {};
    const auto digest = p_.digest.sha256(readFile(path));
    if (digest == information_.digest) return {};
    return "the image's SHA-256 is " + digest + ", but firmware.inf says " + toUtf8(information_.digest);
}

/// From here to the reset the device has no firmware, and the next start must know even if this one is killed.
void UpdateRun::openJournal() {
    p_.inhibitor.hold("A device is being programmed");
    const auto port = toUtf8(report_.portName);
    const auto known = p_.journal.read();
    wasInJournal_ = std::any_of(known.begin(), known.end(), [&port](const auto& run) { return run.port == port; });
    p_.journal.add({p_.session.runtime.timestamp(), port, toUtf8(report_.deviceVersion), report_.imagePath});
}

/// A device that was taken in its boot loader, at a port of which nothing is known, may have been left there at
/// another.
void UpdateRun::closeJournal() {
    if (inIsp_ && !wasInJournal_) {
        p_.journal.clear();
    } else {
        p_.journal.remove(toUtf8(report_.portName));
    }
}

/// Up to three tries. An erase that has succeeded is not repeated, unless what was programmed since is in doubt.
bool UpdateRun::eraseAndProgram(const std::string& image) {
    constexpr int kTries = 3;
    bool erased = false;
    for (int iTry = 1; iTry <= kTries; ++iTry) {
        p_.view.phase(RunPhase::erase);
        report_.wasErased = true;
        if (!erased && (erased = p_.isp.ISP_Erase())) p_.programmer.erased(p_.isp.eraseTime());
        report_.isErased = report_.isErased || erased;
        if (erased) {
            p_.view.phase(RunPhase::program);
            if (p_.programmer.ISP_Program(image) && isQuietAfterwards()) return true;
            erased = !p_.programmer.mustEraseAgain();
        }
        log("\r\niTry:" + std::to_string(iTry) + "\r\n");
        LineReader(p_.session).wait_comm_empty();
    }
    return false;
}

/// The pause before the reset; an answer that comes in it is one too many.
bool UpdateRun::isQuietAfterwards() {
    p_.isp.wait_output_empty(250);
    p_.session.runtime.Sleep(50);
    return p_.programmer.isQuiet();
}

void UpdateRun::fillLinks() {
    setCancellable(false);
    if (!information_.isKnown() || report_.deviceVersion.empty()) return;
    std::vector<ReferenceLink> links;
    for (int i = 1; i <= FirmwareInformation::kLinks; ++i) {
        const auto& title = information_.linkTitle[static_cast<std::size_t>(i - 1)];
        if (!title.empty()) links.push_back({i, title});
    }
    p_.view.links(links);
}

/// Always the last step. A device that accepted a password over HID is told that the session ends.
void UpdateRun::closePorts() {
    constexpr std::uint8_t kEndOfSession = 4;
    auto& session = p_.session;
    session.stop = session.cancel = false;
    setCancellable(false);
    p_.inhibitor.release();
    const auto keptApart = [this](const std::function<void()>& step) {
        try {
            step();
        } catch (const std::exception& error) {
            p_.view.advice(error.what());
        }
    };
    keptApart([&] {
        session.comm = &p_.serialPort;
        if (session.comm->PortOpen()) session.comm->PortOpen(false);
    });
    session.comm = &p_.hidPort;
    keptApart([&] {
        if (session.comm->PortOpen() && session.loggedIn) p_.query.Query(kEndOfSession, 3000);
    });
    keptApart([&] {
        if (session.comm->PortOpen()) session.comm->PortOpen(false);
    });
}

void UpdateRun::setCancellable(bool isCancellable) {
    isCancellable_ = isCancellable;
    p_.view.cancellable(isCancellable);
}

void UpdateRun::cancel() {
    if (!isCancellable_) return;
    cancelRequested_ = true;
    p_.session.stop = p_.session.cancel = true;
    p_.reader.cancelCommand();
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
