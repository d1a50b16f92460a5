#pragma once

#include "app/UpdateRun.h"
#include "platform/Platform.h"
#include "ports/clsMSComm.h"

namespace corvane {

/// What a face lends to the workflow: where it shows things and how it asks. The window has one, the console another.
struct Face {
    Log& log;
    Progress& progress;
    PortPanel& panel;
    PasswordPrompt& password;
    OperatorPrompts& prompts;
    RunView& view;
};

/// Everything between a face and the platform, put together: ports, device dialogue, site, selection, run. Owns all of
/// that and nothing that it is given. Both ports are closed and the site is left when it ends.
class Updater {
public:
    Updater(const Platform& platform, const Face& face);
    ~Updater();
    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    Choices choices;

    UpdateRun& run() { return run_; }
    DeviceScanner& scanner() { return scanner_; }
    DeviceSession& session() { return session_; }
    SiteAccess& site() { return site_; }
    FirmwareSelection& selection() { return selection_; }
    InfReader& inf() { return inf_; }
    clsIMScomm& serialPort() { return serialPort_; }
    clsIMScomm& hidPort() { return hidPort_; }
    const Platform& platform() const { return platform_; }

    /// Closes the ports and leaves the site; to be called before the program ends.
    void shutDown();

private:
    /// Until a HID reader is there to identify, nothing is.
    struct NoReader : ReaderIdentity {
        std::string deviceText() override { return {}; }
        std::string firmwareText() override { return {}; }
    };

    Platform platform_;
    clsMSCommEvent commEvent_;
    clsMSComm serialPort_;
    clsIMScomm hidPort_;
    NoReader reader_;
    DeviceSession session_;
    DeviceQuery query_;
    DeviceScanner scanner_;
    IspSession isp_;
    HexProgrammer programmer_;
    InfReader inf_;
    FTPDownload ftp_;
    SiteAccess site_;
    SelfUpdate selfUpdate_;
    FirmwareSelection selection_;
    UpdateRun run_;
};

}  // namespace corvane
