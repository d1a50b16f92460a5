#pragma once

#include "face/OperatorPrompts.h"
#include "platform/Digest.h"
#include "platform/Launcher.h"
#include "site/InfReader.h"
#include "site/SiteAccess.h"

namespace corvane {

/// Offers a newer copy of this program when the site announces one.
class SelfUpdate {
public:
    SelfUpdate(InfReader& reader, const ProgramFolder& folder, SiteAccess& site, OperatorPrompts& prompts,
               Launcher& launcher, Digest& digest)
        : reader_(reader), folder_(folder), site_(site), prompts_(prompts), launcher_(launcher), digest_(digest) {}

    /// True only when a newer copy was announced, the operator agreed, and the download succeeded: of the file that
    /// firmware.inf means, when that gives its digest, and of one that can be started here.
    [[nodiscard]] bool CheckNewVersion();

    /// Why the copy that the operator agreed to at the last check could not be had.
    const SiteFailure& failure() const { return failure_; }

    /// Where the copy lies that was downloaded last. Its given names differ: it is stored as "\download\Corvane.exe"
    /// and started as "/download/corvane.exe". On a system that tells upper from lower case, both mean the stored file.
    const std::string& newProgram() const { return path_; }

    /// SHA-256 of that copy when it was checked.
    const std::string& digestOfIt() const { return found_; }

private:
    std::string faultOf(const std::string& program, const std::string& digest);

    InfReader& reader_;
    const ProgramFolder& folder_;
    SiteAccess& site_;
    OperatorPrompts& prompts_;
    Launcher& launcher_;
    Digest& digest_;
    std::string path_, found_;
    SiteFailure failure_;
};

}  // namespace corvane
