#pragma once

#include <functional>

#include "face/FirmwareDialog.h"
#include "face/Log.h"
#include "platform/SettingsStore.h"
#include "platform/files/ProgramFolder.h"
#include "settings/Choices.h"
#include "site/InfReader.h"

namespace corvane {

/// How a selection ended.
enum class SelectionEnd { chosen, cancelled, nothingSuitable, nothingListed };

/// Builds the firmware list and lets the operator choose from it. Owns nothing.
class FirmwareSelection {
public:
    FirmwareSelection(const Choices& choices, const ProgramFolder& folder, InfReader& inf, SettingsStore& settings,
                      OperatorPrompts& prompts, Log& log)
        : choices_(choices), folder_(folder), inf_(inf), settings_(settings), prompts_(prompts), log_(log) {}

    /// The records on offer: the local image alone, or the complete sections of firmware.inf; off line those whose file
    /// lies in the Download folder.
    /// Of a signed list those alone that a digest tells from others.
    std::vector<FirmwareRecord> list() const;

    /// Why some of a signed list's are not offered, a sentence; empty when all are. UTF-8.
    std::string withheld() const;

    /// Who answers for what list() offers. A local image is the operator's own affair; whether the signed list knows
    /// it is said all the same.
    Vouching vouching() const;

    /// The image of such a record as far as it is on this computer: the local file, or its copy in the Download folder,
    /// read now. None when there is no copy yet, or it cannot be read.
    Image localImage(const FirmwareRecord& record, Digest& digest) const;

    /// Logs why nothing was chosen. When something was, szFileVersion receives its section name, a blank, its version.
    [[nodiscard]] SelectionEnd SelectFirmware(std::string& szFileVersion, const std::string& szPort,
                                              const std::string& szDeviceVersion, bool force, bool inIsp);

    /// The dialog and its result code: 0 chosen, 1 cancelled, 2 nothing suitable.
    std::int32_t ShowQuery(std::string& szFileVersion, const std::string& szPort, const std::string& szDeviceVersion,
                           const std::string& szROMList, bool bIsForceISPMode, bool bIsFirmwareNotFound);

    /// The console leaves the entry that the window remembers alone.
    void remembersEntry(bool remembers) { remembers_ = remembers; }

private:
    const Choices& choices_;
    const ProgramFolder& folder_;
    InfReader& inf_;
    SettingsStore& settings_;
    OperatorPrompts& prompts_;
    Log& log_;
    bool remembers_ = true;
};

}  // namespace corvane
