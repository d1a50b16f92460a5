#include "run/Installation.h"

#include <algorithm>

#include "text/Cp1252.h"

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

}  // namespace

Ending Installation::install(Outcome& outcome) {
    auto& facts = outcome.facts;
    const bool isInBootLoader = outcome.device == DeviceState::leftInBootLoader;
    if (!isInBootLoader) {
        if (auto ending = enterBootLoader(outcome.device)) {
            log("Can't enter ISP Mode!!\r\n");
            return session_.comm->PortOpen() ? *ending : Ending{RunEnd::lostInSwitch, toUtf8(facts.port)};
        }
    }
    log("\r\n[ISP Mode]\r\n");
    const Awake awake(inhibitor_, "A device is being programmed");
    openJournal(facts);
    const bool isProgrammed = eraseAndProgram(outcome);
    facts.repeatedRecords = programmer_.repeatedRecords();
    if (!isProgrammed) {
        if (!session_.comm->PortOpen()) return {RunEnd::lostInBootLoader, toUtf8(facts.port)};
        return {outcome.device == DeviceState::bootLoaderEmpty ? RunEnd::programmingFailed : RunEnd::eraseFailed};
    }
    view_.phase(RunPhase::reset);
    isp_.ISP_Reset();
    isp_.wait_output_empty(250);
    session_.runtime.Sleep(250);
    outcome.device = session_.comm->PortOpen() ? DeviceState::application : DeviceState::unknown;
    if (isInBootLoader && !wasInJournal_) {
        // It was taken in its boot loader at a port of which nothing is known: it may have been left there at another.
        closeJournal(journal_.clear(), facts);
    } else {
        closeJournal(journal_.remove(toUtf8(facts.portName)), facts);
    }
    session_.runtime.DoEvents();  // whoever pressed something meanwhile is still told that it came too late
    return {RunEnd::updated};
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

/// From here to the reset the device has no firmware, and the next start must know even if this one is killed.
void Installation::openJournal(RunFacts& facts) {
    const auto port = toUtf8(facts.portName);
    const auto known = journal_.read();
    wasInJournal_ = std::any_of(known.begin(), known.end(), [&port](const auto& run) { return run.port == port; });
    if (journal_.add({session_.runtime.timestamp(), port, toUtf8(facts.deviceVersion), facts.image.path()})) return;
    facts.remarks.push_back("The journal " + journal_.path() +
                            " could not be written: had the program or the computer failed meanwhile, the next start "
                            "would not have known of this device.");
}

void Installation::closeJournal(bool isClosed, RunFacts& facts) {
    if (isClosed) return;
    facts.remarks.push_back("The journal " + journal_.path() +
                            " could not be written: the next start still names this device, which is well.");
}

/// Up to three tries. An erase that has succeeded is not repeated.
bool Installation::eraseAndProgram(Outcome& outcome) {
    constexpr int kTries = 3;
    programmer_.beginDevice();
    outcome.facts.repeatedRecords = 0;
    for (int iTry = 1; iTry <= kTries; ++iTry) {
        view_.phase(RunPhase::erase);
        if (outcome.device != DeviceState::bootLoaderEmpty) {
            outcome.device = DeviceState::bootLoaderDoubtful;
            if (isp_.ISP_Erase()) outcome.device = DeviceState::bootLoaderEmpty;
        }
        if (outcome.device == DeviceState::bootLoaderEmpty) {
            view_.phase(RunPhase::program);
            if (programmer_.ISP_Program(outcome.facts.image) && isQuietAfterwards()) return true;
        }
        log("\r\niTry:" + std::to_string(iTry) + "\r\n");
        LineReader(session_).wait_comm_empty();
    }
    return false;
}

/// The pause before the reset; a refusal that comes in it belongs to the last record.
bool Installation::isQuietAfterwards() {
    isp_.wait_output_empty(250);
    session_.runtime.Sleep(50);
    return !programmer_.isRefusalLeft();
}

}  // namespace corvane
