#pragma once

#include <optional>
#include <string>

namespace corvane {

/// "ftp://[user@]host[:port]" as it is typed; what is not given comes from elsewhere.
struct SiteAddress {
    std::string server;  ///< host and port
    std::optional<std::string> user;
    bool hasPassword = false;  ///< one stood behind the user; every process on the machine can read it there
};

/// Nothing for a text that does not begin with "ftp://" (in any case). A path behind the host does not count.
std::optional<SiteAddress> parseSiteAddress(const std::string& text);

}  // namespace corvane
