#include "platform/linux/transfer/FtpAddress.h"

#include <algorithm>

#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::string_view kScheme = "ftp://";

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

/// What would end the host of an address, or be decoded in it.
bool isPossibleHost(std::string_view host) {
    return !host.empty() && host.find_first_of(" /?#@\\%") == std::string_view::npos;
}

void appendEscaped(std::string& url, char c) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (kPlain.find(c) != std::string_view::npos) {
        url += c;
        return;
    }
    const auto byte = static_cast<unsigned char>(c);
    url += '%';
    url += kDigits[byte >> 4];
    url += kDigits[byte & 15];
}

}  // namespace

std::optional<FtpAddress> FtpAddress::parse(std::string_view text) {
    if (!startsWithNoCase(text, kScheme) || std::any_of(text.begin(), text.end(), isControl)) return std::nullopt;
    text.remove_prefix(kScheme.size());
    // A "/" before the first "@" belongs to the password.
    const auto at = text.find('@');
    const auto slash = text.find('/', at == std::string_view::npos ? 0 : at);
    const auto authority = text.substr(0, slash);
    const auto hostStart = authority.rfind('@') + 1;  // 0 when there is none
    FtpAddress address;
    address.host = authority.substr(hostStart);
    if (!isPossibleHost(address.host)) return std::nullopt;
    if (hostStart > 0) {
        const auto account = authority.substr(0, hostStart - 1);
        const auto colon = account.find(':');
        address.user = account.substr(0, colon);
        if (colon != std::string_view::npos) address.password = account.substr(colon + 1);
    }
    if (slash != std::string_view::npos) address.path = text.substr(slash);
    return address;
}

std::string FtpAddress::url() const {
    std::string url = std::string(kScheme) + host + "/";
    if (path.empty()) return url;
    url += "%2F";
    for (std::size_t i = 1; i < path.size(); ++i) appendEscaped(url, path[i]);
    return url;
}

}  // namespace corvane
