#pragma once

#include "platform/Platform.h"
#include "platform/ProgramInfo.h"
#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/LinuxLauncher.h"
#include "platform/linux/LinuxPortMap.h"
#include "platform/linux/LinuxProgramFolder.h"
#include "platform/linux/QtDigest.h"
#include "platform/linux/QtSettingsStore.h"
#include "platform/linux/SysfsPowerSupply.h"
#include "platform/linux/UserFolders.h"
#include "platform/linux/events/LinuxRuntime.h"
#include "platform/linux/files/LinuxFileStore.h"
#include "platform/linux/files/ProcProcesses.h"
#include "platform/linux/keyring/LibsecretStore.h"
#include "platform/linux/serial/ProcPortInspector.h"
#include "platform/linux/serial/TermiosSerialControl.h"
#include "platform/linux/transfer/CurlAsyncReader.h"
#include "platform/linux/trust/SodiumSignatures.h"

namespace corvane {

/// The real side of every seam, one of each, for a program's main to hold.
class LinuxPlatform {
public:
    LinuxPlatform() : keys_{{"/etc/corvane/keys", userConfigFolder() + "/Corvane/keys"}, makerKey()} {}

    /// For a rehearsal: with another program folder than the program's own, and an unsigned site.
    explicit LinuxPlatform(const LinuxProgramFolder& folder) : folder_(folder) {}

    LinuxRuntime& runtime() { return runtime_; }
    const LinuxProgramFolder& folder() const { return folder_; }

    /// Without an inhibitor the computer may fall asleep during a run: the real one needs Qt's D-Bus,
    /// which the console does without. The window hands over its own.
    Platform seams() { return seams(noInhibitor_); }
    Platform seams(SleepInhibitor& inhibitor) {
        return {runtime_,    serial_, ports_,    modules_,   reader_,
                settings_,   folder_, launcher_, digest_,    inspector_,
                inhibitor,   power_,  files_,    processes_, folder_.transportLibrary(),
                signatures_, keys_};
    }

private:
    LinuxRuntime runtime_;
    LinuxPortMap ports_;
    TermiosSerialControl serial_{runtime_, ports_};
    DlModuleLoader modules_;
    CurlAsyncReader reader_{runtime_};
    LibsecretStore secrets_;
    QtSettingsStore settings_{secrets_};
    LinuxProgramFolder folder_;
    LinuxLauncher launcher_{runtime_};
    QtDigest digest_;
    ProcPortInspector inspector_;
    NoInhibitor noInhibitor_;
    SysfsPowerSupply power_;
    LinuxFileStore files_;
    ProcProcesses processes_;
    SodiumSignatures signatures_;
    KeyPlaces keys_;
};

}  // namespace corvane
