#pragma once

#include "app/InfReader.h"
#include "app/OperatorPrompts.h"
#include "app/SiteAccess.h"

namespace corvane {

/// Offers a newer copy of this program when the site announces one.
class SelfUpdate {
public:
    SelfUpdate(InfReader& reader, const ProgramFolder& folder, SiteAccess& site, OperatorPrompts& prompts)
        : reader_(reader), folder_(folder), site_(site), prompts_(prompts) {}

    /// True only when a newer copy was announced, the operator agreed, and the download succeeded.
    bool CheckNewVersion();

    /// Where the downloaded copy lies.
    std::string newProgram() const { return folder_.resolve("/download/corvane.exe"); }

private:
    InfReader& reader_;
    const ProgramFolder& folder_;
    SiteAccess& site_;
    OperatorPrompts& prompts_;
};

}  // namespace corvane
