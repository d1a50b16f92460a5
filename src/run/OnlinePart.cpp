#include "run/OnlinePart.h"

namespace corvane {
namespace {

Ending loginEnding(const SiteFailure& failure) {
    switch (failure.kind) {
        case SiteFailure::Kind::cancelled:
            return {RunEnd::cancelled};
        case SiteFailure::Kind::loginRefused:
            return {RunEnd::loginRefused, failure.words};
        case SiteFailure::Kind::notStored:
            return {RunEnd::notStored, "The login failed: " + failure.words};
        default:
            return {RunEnd::loginFailed, failure.words};
    }
}

Ending informationEnding(const SiteFailure& failure) {
    if (failure.kind == SiteFailure::Kind::notBelieved) return {RunEnd::listNotBelieved, failure.words};
    const auto whole = "firmware.inf could not be fetched: " + failure.words;
    if (failure.kind == SiteFailure::Kind::oldFileStays) return {RunEnd::oldFileStays, whole};
    if (failure.kind == SiteFailure::Kind::notStored) return {RunEnd::notStored, whole};
    return {RunEnd::informationMissing, failure.words};
}

}  // namespace

std::optional<Ending> OnlinePart::enter(std::vector<std::string>& remarks) {
    view_.phase(RunPhase::login);
    if (!site_.login()) return loginEnding(site_.failure());
    view_.phase(RunPhase::information);
    if (!site_.fetchInformation(inf_)) {
        const auto ending = informationEnding(site_.failure());
        site_.disconnect();
        return ending;
    }
    for (auto& remark : site_.takeRemarks()) remarks.push_back(std::move(remark));
    if (selfUpdate_.CheckNewVersion()) return handOver();
    if (const auto& failure = selfUpdate_.failure()) {
        remarks.push_back("The newer program could not be fetched: " + failure.words + ". This one went on.");
    }
    // The idle watch may have closed the session while the operator thought about the question.
    if (!site_.isConnected()) return Ending{RunEnd::sessionClosed};
    return std::nullopt;
}

Ending OnlinePart::handOver() {
    site_.disconnect();
    log_.ShowInfo(" Disconnected...\r\n");
    log_.ShowInfo(" Install New Corvane...\r\n");
    // The newer program starts in the Download folder, where no HID library lies beside it: it is told where this
    // program's is.
    const auto problem = successor_.launcher.start(selfUpdate_.newProgram(), selfUpdate_.digestOfIt(),
                                                   {{kHidLibraryVariable, successor_.hidLibrary}});
    return problem.empty() ? Ending{RunEnd::handedOver} : Ending{RunEnd::handOverFailed, problem};
}

}  // namespace corvane
