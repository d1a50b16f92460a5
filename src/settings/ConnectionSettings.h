#pragma once

#include <string>

#include "platform/AsyncReader.h"

namespace corvane {

/// What the connection dialog keeps: how the site is reached, and what follows an update. Text in UTF-8.
struct ConnectionSettings {
    int accessType = 0;  ///< 0 Default, 1 Direct, 2 Proxy; an index into the dialog's list
    std::string proxy;
    bool asksVersion = true;  ///< an updated device is asked which version it runs now

    /// The proxy field counts, and can be edited, for the third entry alone.
    bool usesProxy() const { return accessType == 2; }
    SiteRoute route() const { return {static_cast<SiteRoute::Access>(accessType), proxy}; }
};

}  // namespace corvane
