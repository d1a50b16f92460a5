#pragma once

#include "face/RunView.h"
#include "platform/Launcher.h"
#include "run/Outcome.h"
#include "site/SelfUpdate.h"

namespace corvane {

/// What a run does at the maker's site before it looks for a device: login, firmware.inf, the question about a newer
/// program. Owns nothing.
class OnlinePart {
public:
    OnlinePart(SiteAccess& site, SelfUpdate& selfUpdate, Launcher& launcher, const ProgramFolder& folder, Log& log,
               RunView& view)
        : site_(site), selfUpdate_(selfUpdate), launcher_(launcher), folder_(folder), log_(log), view_(view) {}

    /// How the run ended there; nothing when it goes on, with an open session. What went wrong and ends nothing is
    /// added to the remarks.
    [[nodiscard]] std::optional<Ending> enter(std::vector<std::string>& remarks);

private:
    Ending handOver();

    SiteAccess& site_;
    SelfUpdate& selfUpdate_;
    Launcher& launcher_;
    const ProgramFolder& folder_;
    Log& log_;
    RunView& view_;
};

}  // namespace corvane
