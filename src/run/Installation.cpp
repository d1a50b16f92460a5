#include "run/Installation.h"

#include <algorithm>

#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// The computer stays awake as long as this lives.
class Awake {
public:
    Awake(SleepInhibitor& inhibitor, const std::string& reason) : inhibitor_(inhibitor) { inhibitor.hold(reason); }
    ~Awake() { inhibitor_.release(); }
    Awake(const Awake&) = delete;
    Awake& operator=(const Awake&) = delete;

private:
    SleepInhibitor& inhibitor_;
};

/// The journal's entry belongs to a run as long as this lives.
class AtWork {
public:
    explicit AtWork(RunJournal& journal) : journal_(journal) {}
    ~AtWork() { (void)journal_.leave(); }  // at its worst the entry stays this process's for as long as that lives
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;

private:
    RunJournal& journal_;
};

}  // namespace

InterruptedRun Installation::entryFor(const Outcome& outcome) const {
    const auto& facts = outcome.facts;
    const bool isInBootLoader = outcome.device == DeviceState::leftInBootLoader;
    return {session_.runtime.timestamp(),
            toUtf8(facts.portName),
            toUtf8(facts.deviceVersion),
            facts.image.path(),
            facts.place,
            isInBootLoader ? InterruptedRun::Firmware::none : InterruptedRun::Firmware::old,
            {},
            toUtf8(facts.image.info().version)};
}

std::optional<InterruptedRun> Installation::confusedWith(const Outcome& outcome) const {
    if (outcome.device != DeviceState::leftInBootLoader) return std::nullopt;
    return journal_.confusedWith(entryFor(outcome));
}

std::string Installation::remember(const Outcome& outcome) {
    return journal_.begin(entryFor(outcome), outcome.device == DeviceState::leftInBootLoader);
}

Ending Installation::install(Promise promise, Outcome& outcome) {
    const AtWork atWork(journal_);
    auto& facts = outcome.facts;
    wasInBootLoader_ = outcome.device == DeviceState::leftInBootLoader;
    if (!wasInBootLoader_) {
        if (auto ending = enterBootLoader(outcome.device)) {
            log("Can't enter ISP Mode!!\r\n");
            closeJournal(outcome);
            return session_.comm->PortOpen() ? *ending : Ending{RunEnd::lostInSwitch, toUtf8(facts.port)};
        }
    }
    log("\r\n[ISP Mode]\r\n");
    const Awake awake(inhibitor_, "A device is being programmed");
    auto ending = program(promise, outcome);
    facts.repeatedRecords = programmer_.repeatedRecords();
    closeJournal(outcome);
    session_.runtime.DoEvents();  // a click or a signal meanwhile is told, while the run is on, that it came too late
    return ending;
}

/// Erase, records, restart and proof; once more, within the tries, when an answer came too late to be sure of them.
Ending Installation::program(Promise promise, Outcome& outcome) {
    programmer_.beginDevice(session_.hasLine ? session_.hasLine() : true);
    isp_.beginDevice();
    outcome.facts.repeatedRecords = 0;
    tries_ = 0;
    isFinished_ = false;
    while (eraseAndProgram(outcome)) {
        auto ending = restart(promise, outcome);
        if (ending.end != RunEnd::outOfStep || tries_ == kTries) return ending;
        endTry();
        if (isp_.returnToBootLoader()) continue;
        outcome.device = DeviceState::unheard;
        return ending;
    }
    if (!session_.comm->PortOpen()) return {RunEnd::lostInBootLoader, toUtf8(outcome.facts.port)};
    return {outcome.device == DeviceState::bootLoaderEmpty ? RunEnd::programmingFailed : RunEnd::eraseFailed};
}

/// Restarts the device as the given dialogue does, and then asks it whether it runs, unless nobody wants to know.
Ending Installation::restart(Promise promise, Outcome& outcome) {
    view_.phase(RunPhase::reset);
    outcome.device = DeviceState::unheard;
    const bool mayBeDisturbed = programmer_.mayBeDisturbed();
    isFinished_ ? isp_.restartAgain() : isp_.ISP_Reset();
    isFinished_ = true;
    isp_.wait_output_empty(250);
    session_.runtime.Sleep(250);
    if (promise != Promise::programmed) return prove(promise, mayBeDisturbed, outcome);
    if (!session_.comm->PortOpen()) return {RunEnd::notHeardOf, toUtf8(outcome.facts.port) + " was lost"};
    outcome.device = DeviceState::application;
    return {RunEnd::updated};
}

Ending Installation::prove(Promise promise, bool mayBeDisturbed, Outcome& outcome) {
    auto& facts = outcome.facts;
    view_.phase(RunPhase::proof);
    switch (RestartProof(session_, scanner_, isp_).find({facts.settings, facts.protocolName}, facts.versionNow)) {
        case RestartProof::Found::waits:
            outcome.device = DeviceState::bootLoaderComplete;
            return {RunEnd::notRestarted};
        case RestartProof::Found::silent:
            if (session_.comm->PortOpen()) return {RunEnd::notHeardOf};
            return {RunEnd::notHeardOf, toUtf8(facts.port) + " was lost"};
        case RestartProof::Found::outOfStep:
            if (!mayBeDisturbed) break;
            outcome.device = DeviceState::inDoubt;
            return {RunEnd::outOfStep};
        case RestartProof::Found::runs:
            break;
    }
    outcome.device = DeviceState::application;
    if (containsNoCase(facts.versionNow, outcome.facts.version)) return {RunEnd::updated};
    return {promise == Promise::version ? RunEnd::otherVersion : RunEnd::notConfirmed};
}

/// Nothing when the boot loader's prompt was seen.
std::optional<Ending> Installation::enterBootLoader(DeviceState& device) {
    view_.phase(RunPhase::bootLoader);
    device = DeviceState::mayBeInBootLoader;
    const bool seen = isp_.GoToISP();
    switch (isp_.lastSwitch()) {
        case IspSession::Switch::accepted:
            device = DeviceState::bootLoaderWhole;
            if (seen) return std::nullopt;
            return Ending{RunEnd::bootLoaderSilent};
        case IspSession::Switch::unanswered:
            return Ending{RunEnd::switchUnanswered};
        case IspSession::Switch::locked:
            device = DeviceState::application;
            return Ending{RunEnd::switchLocked};
        case IspSession::Switch::refused:
            break;
    }
    device = DeviceState::application;
    return Ending{RunEnd::switchRefused};
}

/// What the next start would say of the device, were this program killed now.
void Installation::note(InterruptedRun::Firmware firmware, RunFacts& facts) {
    const auto problem = journal_.note(firmware);
    if (problem.empty()) return;
    const auto remark = "The journal " + journal_.path() + " could not be kept up (" + problem +
                        "): had the program or the computer failed meanwhile, the next start would "
                        "not have known how far it came.";
    if (std::find(facts.remarks.begin(), facts.remarks.end(), remark) == facts.remarks.end())
        facts.remarks.push_back(remark);
}

/// The entry goes when the device is well. It is, too, when it was asked to switch and does not answer: its firmware is
/// whole, and the verdict says what starts it.
void Installation::closeJournal(Outcome& outcome) {
    const auto device = outcome.device;
    const bool isWell = device == DeviceState::application || device == DeviceState::mayBeInBootLoader ||
                        device == DeviceState::bootLoaderWhole;
    const auto problem = isWell ? journal_.end() : std::string();
    if (problem.empty()) return;
    outcome.facts.remarks.push_back(
        "The journal " + journal_.path() + " could not be written (" + problem +
        "): the next start still names this device, which is well, until you have it forgotten.");
}

/// Tries until one succeeds, three in all. An erase that has succeeded is not repeated, unless what was programmed
/// since is in doubt.
bool Installation::eraseAndProgram(Outcome& outcome) {
    constexpr std::int32_t kOwed = 1500;  // ms of silence; no answer to what was sent before comes later
    bool isErased = false;
    while (tries_ < kTries) {
        ++tries_;
        view_.phase(RunPhase::erase);
        if (!isErased) {
            if (outcome.device != DeviceState::bootLoaderEmpty) outcome.device = DeviceState::bootLoaderDoubtful;
            if (outcome.device == DeviceState::bootLoaderDoubtful && !wasInBootLoader_)
                note(InterruptedRun::Firmware::uncertain, outcome.facts);
            isErased = isp_.ISP_Erase();
            if (isErased) {
                note(InterruptedRun::Firmware::none, outcome.facts);
                outcome.device = DeviceState::bootLoaderEmpty;
                programmer_.erased(isp_.eraseTime());
            }
        }
        if (isErased) {
            view_.phase(RunPhase::program);
            if (programmer_.ISP_Program(outcome.facts.image) && isQuietAfterwards()) {
                note(InterruptedRun::Firmware::whole, outcome.facts);
                return true;
            }
        }
        endTry();
        if (isErased && programmer_.mustEraseAgain()) {
            isErased = false;
            LineReader(session_).settle(kOwed);
            bringBack(outcome.facts);
        } else if (!isErased && isp_.wasEraseSilent()) {
            bringBack(outcome.facts);
        }
    }
    return false;
}

void Installation::endTry() {
    log("\r\niTry:" + std::to_string(tries_) + "\r\n");
    LineReader(session_).wait_comm_empty();
}

/// A device that lost its power for a moment may have started its application: the old one if the erase had not begun,
/// the new one if all of it was written. It is switched into its boot loader once more.
void Installation::bringBack(const RunFacts& facts) {
    if (!session_.comm->PortOpen() || isp_.isPrompting() || wasInBootLoader_) return;
    constexpr std::int32_t kQuestion = 500;  // ms
    const auto bootSettings = session_.comm->Settings();
    std::string version;
    const bool runs = scanner_.askVersion({facts.settings, facts.protocolName}, kQuestion, version);
    if (runs && isp_.returnToBootLoader()) return;
    (void)scanner_.setSettings(bootSettings);  // a port that refuses them is met at the next question
}

/// The pause before the restart; an answer that comes in it is one too many.
bool Installation::isQuietAfterwards() {
    isp_.wait_output_empty(250);
    session_.runtime.Sleep(50);
    return programmer_.isQuiet();
}

}  // namespace corvane
