#include "app/PortAdvisor.h"

#include <cstring>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

std::string PortAdvisor::refusal(const std::string& port) {
    if (!startsWithNoCase(port, "COM")) {
        const auto reason = readerFailure ? readerFailure() : std::string();
        return port + " does not open" + (reason.empty() ? "" : ": " + reason) +
               ". Plug the reader in again; when this user may not use it, install the udev rules of this program.";
    }
    const auto failure = serial_.openFailure();
    const auto place = port + " (" + failure.path + ")";
    switch (failure.kind) {
        case OpenFailure::Kind::none:
            return {};
        case OpenFailure::Kind::notThere:
            return place + " is not there. Plug the adapter in, or mend its line in serialcomm.conf.";
        case OpenFailure::Kind::noPermission: {
            const auto user = inspector_.userName(), group = inspector_.groupOf(failure.path);
            return "You may not use " + place + ", which belongs to the group " + group + ". Run \"sudo chown " + user +
                   " " + failure.path + "\" and start again; for good, join the group: \"sudo adduser " + user + " " +
                   group + "\", then log in anew.";
        }
        case OpenFailure::Kind::inUse: {
            const auto holder = inspector_.holderOf(failure.path);
            if (!holder) return place + " is in use by another program. Close that and start again.";
            return place + " is in use by " + holder->program + " (process " + std::to_string(holder->process) +
                   "). Close that and start again.";
        }
        case OpenFailure::Kind::noSerialPort:
            return place + " is no serial port. Mend its line in serialcomm.conf.";
        case OpenFailure::Kind::other:
            break;
    }
    return place + " does not open: " + std::strerror(failure.systemError) + ".";
}

std::vector<std::string> PortAdvisor::beforeScan(const std::vector<std::string>& ports) {
    std::vector<std::string> advice;
    for (const auto& port : ports) {
        if (!startsWithNoCase(port, "COM")) continue;
        const auto node = map_.devicePath(static_cast<int>(leadingNumber(port.substr(3))));
        if (!node || !inspector_.isProbedForModems(*node)) continue;
        advice.push_back("ModemManager may be talking to " + port + " (" + *node +
                         "). If the device is not found, stop it: \"sudo systemctl stop ModemManager\".");
    }
    return advice;
}

}  // namespace corvane
