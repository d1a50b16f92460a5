#include "app/Advice.h"

#include <cstring>

namespace corvane {
namespace {

std::string siteAdvice(const std::string& what, const std::string& problem) {
    return what + (problem.empty() ? "." : ": " + problem + ".") + " Nothing on the device has changed.";
}

}  // namespace

std::string adviceFor(const RunReport& report, const std::string& siteProblem) {
    switch (report.end) {
        case RunEnd::loginFailed:
            return siteAdvice("The site did not accept the login", siteProblem);
        case RunEnd::informationMissing:
            return siteAdvice("firmware.inf could not be fetched", siteProblem);
        case RunEnd::imageMissing:
            return siteAdvice("The image could not be fetched or is not there", siteProblem);
        case RunEnd::handOverFailed:
            return "The newer program could not be started: " + report.failure + ".";
        case RunEnd::noDevice:
            return "No device answered. Check cable and power, and that no other program holds the port; a device that "
                   "sits in its boot loader is taken only when that is forced.";
        case RunEnd::nothingSuitable:
            return "None of the images is for this device; forcing offers all of them.";
        case RunEnd::nothingListed:
            return "No image is at hand: firmware.inf is missing, or offers nothing that lies in the Download folder.";
        case RunEnd::notDefined:
            return "firmware.inf does not say what the chosen image is.";
        case RunEnd::noBootLoader:
            return "The device did not enter its boot loader, or does not answer there. Switch it off and on; if it "
                   "does "
                   "not start, force the next run: it looks for the boot loader.";
        case RunEnd::programmingFailed:
            return "The device waits in its boot loader without working firmware. Leave it connected and start again "
                   "with force; a shorter cable or another port may help.";
        case RunEnd::failed:
            return report.failure;
        case RunEnd::updated:
        case RunEnd::alreadyRunning:
        case RunEnd::handedOver:
        case RunEnd::declined:
            break;
    }
    return {};
}

std::string adviceFor(const std::string& port, const OpenFailure& failure) {
    const auto place = port + " (" + failure.path + ")";
    switch (failure.kind) {
        case OpenFailure::Kind::none:
            return {};
        case OpenFailure::Kind::notThere:
            return place + " is not there.";
        case OpenFailure::Kind::noPermission:
            return "You may not use " + place + ".";
        case OpenFailure::Kind::inUse:
            return "Another program uses " + place + ".";
        case OpenFailure::Kind::noSerialPort:
            return place + " is no serial port.";
        case OpenFailure::Kind::other:
            break;
    }
    return place + " does not open: " + std::strerror(failure.systemError) + ".";
}

}  // namespace corvane
