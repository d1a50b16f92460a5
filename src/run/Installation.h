#pragma once

#include "face/RunView.h"
#include "platform/SleepInhibitor.h"
#include "protocol/HexProgrammer.h"
#include "run/Outcome.h"
#include "run/RestartProof.h"
#include "run/RunJournal.h"
#include "settings/Choices.h"

namespace corvane {

/// What a run does to the device: the switch into its boot loader, erase and program with up to three tries, restart,
/// the proof that it runs; and the journal that knows of it meanwhile. Owns nothing. Nothing interrupts it.
class Installation {
public:
    /// The dialogue with the device.
    struct Dialogue {
        DeviceScanner& scanner;
        IspSession& isp;
        HexProgrammer& programmer;
    };

    Installation(DeviceSession& session, const Dialogue& dialogue, RunJournal& journal, SleepInhibitor& inhibitor,
                 RunView& view)
        : session_(session),
          scanner_(dialogue.scanner),
          isp_(dialogue.isp),
          programmer_(dialogue.programmer),
          journal_(journal),
          inhibitor_(inhibitor),
          view_(view) {}

    /// Writes into the journal that the outcome's device is to get its image; comes before install. Empty when it
    /// stands there, else why not, in words: had the program or the computer to stop meanwhile, nobody would know of
    /// the device.
    [[nodiscard]] std::string remember(const Outcome& outcome);
    /// The device that was left at the outcome's place and waits for another image, when this one is another left
    /// device's.
    std::optional<InterruptedRun> confusedWith(const Outcome& outcome) const;
    std::string journalPath() const { return journal_.path(); }

    /// Installs the outcome's image on the device at the session's port. Port and device version stand in it, too; what
    /// becomes of the device stands in it at every moment.
    [[nodiscard]] Ending install(Promise promise, Outcome& outcome);

private:
    InterruptedRun entryFor(const Outcome& outcome) const;
    [[nodiscard]] std::optional<Ending> enterBootLoader(DeviceState& device);
    [[nodiscard]] Ending program(Promise promise, Outcome& outcome);
    [[nodiscard]] bool eraseAndProgram(Outcome& outcome);
    [[nodiscard]] bool isQuietAfterwards();
    void endTry();
    void bringBack(const RunFacts& facts);
    [[nodiscard]] Ending restart(Promise promise, Outcome& outcome);
    [[nodiscard]] Ending prove(Promise promise, bool mayBeDisturbed, Outcome& outcome);
    void note(InterruptedRun::Firmware firmware, RunFacts& facts);
    void closeJournal(Outcome& outcome);
    void log(const std::string& text) { session_.log.ShowInfo(text); }

    static constexpr int kTries = 3;

    DeviceSession& session_;
    DeviceScanner& scanner_;
    IspSession& isp_;
    HexProgrammer& programmer_;
    RunJournal& journal_;
    SleepInhibitor& inhibitor_;
    RunView& view_;
    int tries_ = 0;
    bool isFinished_ = false;       // the log has its last line
    bool wasInBootLoader_ = false;  // when it was found
};

}  // namespace corvane
