#pragma once

#include <optional>

#include "face/OperatorPrompts.h"
#include "site/InfReader.h"
#include "site/SiteAccess.h"

namespace corvane {

/// Offers a newer copy of this program when the site announces one.
class SelfUpdate {
public:
    SelfUpdate(InfReader& reader, const ProgramFolder& folder, SiteAccess& site, OperatorPrompts& prompts)
        : reader_(reader), folder_(folder), site_(site), prompts_(prompts) {}

    /// True only when a newer copy was announced, the operator agreed, and the download succeeded.
    [[nodiscard]] bool CheckNewVersion();

    /// Why the copy that the operator agreed to at the last check could not be had, in UTF-8; nothing when it could, or
    /// when there was none.
    const std::optional<std::string>& failure() const { return failure_; }

    /// Where the copy lies that was downloaded last. It is stored as "\download\Corvane.exe" and would be started as
    /// "/download/corvane.exe"; where letters' case counts, the file that was stored is meant, not another one.
    const std::string& newProgram() const { return path_; }

private:
    InfReader& reader_;
    const ProgramFolder& folder_;
    SiteAccess& site_;
    OperatorPrompts& prompts_;
    std::string path_;
    std::optional<std::string> failure_;
};

}  // namespace corvane
