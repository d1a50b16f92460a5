#pragma once

#include "face/RunView.h"
#include "image/ImageCheck.h"
#include "platform/Digest.h"
#include "platform/Launcher.h"
#include "platform/SleepInhibitor.h"
#include "protocol/DeviceScanner.h"
#include "protocol/HexProgrammer.h"
#include "protocol/IspSession.h"
#include "run/RunJournal.h"
#include "run/RunReport.h"
#include "settings/Choices.h"
#include "site/FirmwareInformation.h"
#include "site/FirmwareSelection.h"
#include "site/SelfUpdate.h"
#include "site/SiteAccess.h"

namespace corvane {

/// The HID reader that is open: its text and firmware version, both empty for a serial port.
class OpenReader {
public:
    virtual ~OpenReader() = default;
    virtual std::string deviceText() = 0;
    virtual std::string firmwareText() = 0;
};

/// What a run works with; all of it lives longer than the run.
struct RunParts {
    const Choices& choices;
    DeviceSession& session;
    clsIMScomm& serialPort;
    clsIMScomm& hidPort;
    DeviceScanner& scanner;
    IspSession& isp;
    HexProgrammer& programmer;
    DeviceQuery& query;
    SiteAccess& site;
    SelfUpdate& selfUpdate;
    FirmwareSelection& selection;
    InfReader& inf;
    const ProgramFolder& folder;
    Launcher& launcher;
    OpenReader& reader;
    Digest& digest;
    RunJournal& journal;
    SleepInhibitor& inhibitor;
    OperatorPrompts& prompts;
    RunView& view;
    std::string hidLibrary;  ///< path of the HID transport library
};

/// One update, from a device that is merely attached to one that is programmed and reset. Reports everything through
/// log, progress and view and never throws; only one run is on at a time.
class UpdateRun {
public:
    explicit UpdateRun(const RunParts& parts) : p_(parts) {}

    /// force lets a device that sits in its boot loader be taken, and offers every image.
    RunReport run(bool force);

    /// Cancels the run at hand while that is possible, else does nothing.
    void cancel();

    /// A port button was clicked: the scan goes there next.
    void jumpToPort(int index);

    /// What is known of the run at hand so far, or of the last one.
    const RunReport& report() const { return report_; }

    bool isRunning() const { return isRunning_; }
    bool isCancellable() const { return isRunning_ && p_.session.cancel.isEnabled(); }

    /// Where a link of the last run leads, on the site; empty when it leads nowhere. The index counts from 1.
    std::string linkTarget(int index) const;

private:
    void begin();
    RunEnd steps(bool force);
    bool goOnline(RunEnd& end);
    RunEnd handOver();
    RunEnd withDevice(bool force);
    void showDevice(const std::string& port);
    std::string portName();
    bool defineFirmware(const std::string& chosen);
    void showFirmware();
    std::string fetchImage();
    RunEnd install(const std::string& image);
    bool isImage(const std::string& image);
    bool isImageWanted();
    std::string digestFault(const std::string& path);
    void openJournal();
    void closeJournal();
    bool eraseAndProgram(const std::string& image);
    bool isQuietAfterwards();
    void fillLinks();
    void closePorts();
    void disableCancel();
    void log(const std::string& text) { p_.session.log.ShowInfo(text); }
    void letEventsRun() { p_.session.runtime.DoEvents(); }

    RunParts p_;
    FirmwareInformation information_;
    RunReport report_;
    ImageReport checked_;
    bool inIsp_ = false;
    bool wasInJournal_ = false;  // the port, when the erase began
    bool isRunning_ = false;
};

}  // namespace corvane
