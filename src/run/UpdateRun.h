#pragma once

#include "platform/Digest.h"
#include "protocol/DeviceScanner.h"
#include "run/Installation.h"
#include "run/OnlinePart.h"
#include "run/RunPorts.h"
#include "settings/Choices.h"
#include "site/FirmwareInformation.h"
#include "site/FirmwareSelection.h"

namespace corvane {

/// What a run works with; all of it lives longer than the run.
struct RunParts {
    const Choices& choices;
    DeviceSession& session;
    RunPorts& ports;
    DeviceScanner& scanner;
    SiteAccess& site;
    OnlinePart& online;
    FirmwareSelection& selection;
    InfReader& inf;
    const ProgramFolder& folder;
    Digest& digest;
    Installation& installation;
    OperatorPrompts& prompts;
    RunView& view;
};

/// One update, from a device that is merely attached to one that is programmed and reset. Reports everything through
/// log, progress and view and never throws; only one run is on at a time.
class UpdateRun {
public:
    explicit UpdateRun(const RunParts& parts) : p_(parts) {}

    /// force lets a device that sits in its boot loader be taken, and offers every image.
    Outcome run(bool force);

    /// Cancels the run at hand while that is possible, else does nothing.
    void cancel();

    /// A port button was clicked: the scan goes there next.
    void jumpToPort(int index);

    /// What is known of the run at hand so far, or of the last one.
    const RunFacts& facts() const { return outcome_.facts; }

    bool isRunning() const { return isRunning_; }
    bool isCancellable() const { return isRunning_ && p_.session.cancel.isEnabled(); }

    /// Where a link of the last run leads, on the site; empty when it leads nowhere. The index counts from 1.
    std::string linkTarget(int index) const;

private:
    void begin();
    [[nodiscard]] Ending steps(bool force);
    [[nodiscard]] Ending withDevice(bool force);
    [[nodiscard]] Ending noDevice() const;
    void noteDevice(const std::string& version, bool inIsp);
    [[nodiscard]] std::optional<Ending> select(bool force, bool inIsp, std::string& chosen);
    [[nodiscard]] bool defineFirmware(const std::string& chosen);
    void showFirmware();
    [[nodiscard]] Ending withImage();
    [[nodiscard]] std::optional<Ending> takeImage();
    [[nodiscard]] std::optional<Ending> fetchImage();
    [[nodiscard]] bool isImageWanted();
    [[nodiscard]] bool isForThisDevice();
    [[nodiscard]] std::optional<Ending> remember();
    [[nodiscard]] std::string digestFault(const Image& image) const;
    void fillLinks();
    void end(const Ending& ending, std::uint32_t start);
    void disableCancel();
    void logText(const char* label, std::string text, const char* end);
    void log(const std::string& text) { p_.session.log.ShowInfo(text); }
    void letEventsRun() { p_.session.runtime.DoEvents(); }

    RunParts p_;
    FirmwareInformation information_;
    Outcome outcome_;
    bool isRunning_ = false;
};

}  // namespace corvane
