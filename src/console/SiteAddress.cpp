#include "console/SiteAddress.h"

#include "text/Text.h"

namespace corvane {

std::optional<SiteAddress> parseSiteAddress(const std::string& text) {
    constexpr char kScheme[] = "ftp://";
    if (!startsWithNoCase(text, kScheme)) return std::nullopt;
    auto rest = text.substr(sizeof kScheme - 1);
    SiteAddress address;
    if (const auto at = rest.rfind('@'); at != std::string::npos) {
        const auto account = rest.substr(0, at);
        rest.erase(0, at + 1);
        const auto colon = account.find(':');
        address.user = account.substr(0, colon);
        address.hasPassword = colon != std::string::npos;
    }
    address.server = rest.substr(0, rest.find('/'));
    return address;
}

}  // namespace corvane
