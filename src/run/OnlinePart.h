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
    /// What a newer program is started with: the launcher, and the path of the HID transport library.
    struct Successor {
        Launcher& launcher;
        std::string hidLibrary;
    };

    OnlinePart(SiteAccess& site, SelfUpdate& selfUpdate, InfReader& inf, const Successor& successor, Log& log,
               RunView& view)
        : site_(site), selfUpdate_(selfUpdate), inf_(inf), successor_(successor), log_(log), view_(view) {}

    /// How the run ended there; nothing when it goes on, with an open session. What went wrong and ends nothing is
    /// added to the remarks.
    [[nodiscard]] std::optional<Ending> enter(std::vector<std::string>& remarks);

private:
    Ending handOver();

    SiteAccess& site_;
    SelfUpdate& selfUpdate_;
    InfReader& inf_;
    Successor successor_;
    Log& log_;
    RunView& view_;
};

}  // namespace corvane
