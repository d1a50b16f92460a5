#pragma once

#include <optional>
#include <string>

#include "platform/AsyncReader.h"

namespace corvane {

/// What the connection dialog keeps: how the site is reached, and what follows an update. Text in UTF-8.
struct ConnectionSettings {
    int accessType = 0;  ///< 0 Default, 1 Direct, 2 Proxy; an index into the dialog's list
    std::string proxy;
    SiteRoute::Encryption encryption = SiteRoute::Encryption::whenOffered;
    std::string authorities;    ///< a file of certificates, the system's bytes; empty for the system's own
    bool asksVersion = true;    ///< an updated device is asked which version it runs now
    bool sparesBattery = true;  ///< on battery, programming looks for answers asleep, which takes a little longer

    /// The proxy field counts, and can be edited, for the third entry alone.
    bool usesProxy() const { return accessType == 2; }
    SiteRoute route() const { return {static_cast<SiteRoute::Access>(accessType), proxy, encryption, authorities}; }
};

/// "off", "try" or "require", as settings and options have it; nothing for another word.
const char* nameOf(SiteRoute::Encryption encryption);
std::optional<SiteRoute::Encryption> encryptionNamed(const std::string& name);

}  // namespace corvane
