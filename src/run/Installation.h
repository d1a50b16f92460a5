#pragma once

#include "face/RunView.h"
#include "platform/SleepInhibitor.h"
#include "protocol/HexProgrammer.h"
#include "protocol/IspSession.h"
#include "run/Outcome.h"
#include "run/RunJournal.h"

namespace corvane {

/// What a run does to the device: the switch into its boot loader, erase and program with up to three tries, restart;
/// and the journal that knows of it meanwhile. Owns nothing. Nothing interrupts it.
class Installation {
public:
    Installation(DeviceSession& session, IspSession& isp, HexProgrammer& programmer, RunJournal& journal,
                 SleepInhibitor& inhibitor, RunView& view)
        : session_(session),
          isp_(isp),
          programmer_(programmer),
          journal_(journal),
          inhibitor_(inhibitor),
          view_(view) {}

    /// Installs the outcome's image on the device at the session's port. Port and device version stand in it, too; what
    /// becomes of the device stands in it at every moment.
    [[nodiscard]] Ending install(Outcome& outcome);

private:
    [[nodiscard]] std::optional<Ending> enterBootLoader(DeviceState& device);
    [[nodiscard]] bool eraseAndProgram(Outcome& outcome);
    [[nodiscard]] bool isQuietAfterwards();
    void openJournal(RunFacts& facts);
    void closeJournal(bool isClosed, RunFacts& facts);
    void log(const std::string& text) { session_.log.ShowInfo(text); }

    DeviceSession& session_;
    IspSession& isp_;
    HexProgrammer& programmer_;
    RunJournal& journal_;
    SleepInhibitor& inhibitor_;
    RunView& view_;
    bool wasInJournal_ = false;  // the port, when the erase began
};

}  // namespace corvane
