#include "app/PortAdvisor.h"

#include <cstring>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

std::string PortAdvisor::refusal(const std::string& port) {
    if (!startsWithNoCase(port, "COM")) return readerRefusal(port);
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
        case OpenFailure::Kind::inUse:
            return inUse(place, failure.path);
        case OpenFailure::Kind::noSerialPort:
            return place + " is no serial port. Mend its line in serialcomm.conf.";
        case OpenFailure::Kind::other:
            break;
    }
    return place + " does not open: " + std::strerror(failure.systemError) + ".";
}

std::string PortAdvisor::readerRefusal(const std::string& port) {
    const auto failure = readerFailure ? readerFailure(port) : ReaderFailure();
    if (failure.isInUse) return inUse(port + " (" + failure.path + ")", failure.path);
    return port + " does not open" + (failure.words.empty() ? "" : ": " + failure.words) +
           ". Plug the reader in again; when this user may not use it, install the udev rules of this program.";
}

std::string PortAdvisor::inUse(const std::string& place, const std::string& node) {
    const auto holder = inspector_.holderOf(node);
    return place + " is in use by " + (holder ? holder->text() : "another program") + ". Close that and start again.";
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
