#pragma once

#include "app/PortAdvisor.h"
#include "app/PortList.h"
#include "app/ReportMaker.h"
#include "face/Face.h"
#include "platform/Platform.h"
#include "ports/clsMSComm.h"
#include "ports/clsVellComm.h"
#include "record/Recorder.h"
#include "record/RecordingFile.h"
#include "run/JobRecord.h"
#include "run/RememberedAnswers.h"
#include "run/Series.h"
#include "run/UpdateRun.h"
#include "run/Verdict.h"
#include "site/References.h"
#include "text/Cp1252.h"

namespace corvane {

/// Everything between a face and the platform, put together: ports, device dialogue, site, selection, run. Owns all of
/// that and nothing that it is given. Call shutDown before it ends.
class Updater {
public:
    Updater(const Platform& platform, const Face& face);
    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    Choices choices;

    /// A HID reader was plugged in or out; a text to show, in UTF-8.
    std::function<void(const std::string& text, bool isPluggedIn)> onReader;

    /// A run. With the answers that the operator gave to the one before nobody is asked the same once more; the device
    /// that a series has waited for is looked for where it was seen.
    Outcome start(bool force, bool keepsAnswers = false);

    UpdateRun& run() { return run_; }
    Series& series() { return series_; }
    DeviceScanner& scanner() { return scanner_; }
    DeviceSession& session() { return session_; }
    SiteAccess& site() { return site_; }
    FirmwareSelection& selection() { return selection_; }
    InfReader& inf() { return inf_; }
    const ListTrust& trust() const { return trust_; }
    RunJournal& journal() { return journal_; }
    References& references() { return references_; }
    JobRecord& jobs() { return jobs_; }
    PortAdvisor& advisor() { return advisor_; }
    PortList& portList() { return portList_; }

    /// Why the port that was tried last did not open and what helps, in UTF-8.
    std::string refusal(const std::string& port) { return advisor_.refusal(toUtf8(port)); }
    clsMSComm& serialPort() { return serialPort_; }
    clsVellComm& hidPort() { return hidPort_; }
    VellIO& vellIO() { return vellIO_; }
    /// What was taken down of the last run, as text, and what can be sent of it.
    std::string recording() const { return recorder_.tape.text(); }
    ReportMaker& reports() { return reports_; }
    const Platform& platform() const { return platform_; }

    /// What follows a run: adds one that was a job on a device to the record of jobs, and says what the operator has to
    /// know.
    [[nodiscard]] Verdict conclude(Outcome outcome);

    /// Ends a dialogue with the device that belongs to no run: a scan.
    void cancelDialogue() { cancel_.request(); }

    /// Closes both ports, gives the HID library back and leaves the site. A reader is told that it is closed, so events
    /// may run meanwhile; that is why no destructor does it.
    void shutDown();

private:
    class HidReader : public OpenReader {
    public:
        HidReader(VellIO& vellIO, const Platform& platform) : vellIO_(vellIO), platform_(platform) {}
        std::string deviceText() override;
        std::string firmwareText() override { return vellIO_.GetHIDVersion(); }
        std::string place(const std::string& port) override;

    private:
        VellIO& vellIO_;
        const Platform& platform_;
    };

    void lookFirstWhereItIsMissed();
    void tellReader(std::int32_t event, const std::string& port, const std::string& device);

    Recorder recorder_;
    Platform platform_;
    Face face_;
    RememberedAnswers answers_;
    Cancel cancel_;
    VellIO vellIO_;
    clsMSCommEvent commEvent_;
    clsMSComm serialPort_;
    clsVellComm hidPort_;
    HidReader reader_;
    DeviceSession session_;
    RunPorts ports_;
    DeviceScanner scanner_;
    IspSession isp_;
    HexProgrammer programmer_;
    ListTrust trust_;
    InfReader inf_;
    FTPDownload ftp_;
    SiteAccess site_;
    References references_;
    SelfUpdate selfUpdate_;
    FirmwareSelection selection_;
    RunJournal journal_;
    RecordingFile recordingFile_;
    JobRecord jobs_;
    OnlinePart online_;
    Installation installation_;
    UpdateRun run_;
    Series series_;
    PortAdvisor advisor_;
    PortList portList_;
    ReportMaker reports_;
};

}  // namespace corvane
