#include "run/OnlinePart.h"

namespace corvane {

std::optional<Ending> OnlinePart::enter(std::vector<std::string>& remarks) {
    view_.phase(RunPhase::login);
    if (!site_.login()) return Ending{RunEnd::loginFailed, site_.problem()};
    view_.phase(RunPhase::information);
    if (!site_.FTP_Download("/firmware/firmware.inf", folder_.resolve("\\firmware.inf"))) {
        const Ending ending{RunEnd::informationMissing, site_.problem()};
        site_.disconnect();
        return ending;
    }
    if (selfUpdate_.CheckNewVersion()) return handOver();
    if (const auto& failure = selfUpdate_.failure()) {
        remarks.push_back("The newer program could not be fetched" + (failure->empty() ? "" : ": " + *failure) +
                          ". This one went on.");
    }
    // The idle watch may have closed the session while the operator thought about the question.
    if (!site_.isConnected()) return Ending{RunEnd::sessionClosed};
    return std::nullopt;
}

Ending OnlinePart::handOver() {
    site_.disconnect();
    log_.ShowInfo(" Disconnected...\r\n");
    log_.ShowInfo(" Install New Corvane...\r\n");
    const auto problem = launcher_.start(selfUpdate_.newProgram());
    return problem.empty() ? Ending{RunEnd::handedOver} : Ending{RunEnd::handOverFailed, problem};
}

}  // namespace corvane
