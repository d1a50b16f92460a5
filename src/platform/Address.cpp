#include "platform/Address.h"

#include <algorithm>
#include <charconv>

#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

bool hasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

/// False for what would end the host of an address, or mean something else in it.
bool isPossibleHost(std::string_view host) {
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        return host.substr(1, host.size() - 2).find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return !host.empty() && host.find_first_of(" /?#@\\%:[]") == std::string_view::npos;
}

std::optional<std::uint16_t> portOf(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port == 0) return std::nullopt;
    return port;
}

std::string escaped(std::string_view text, std::string_view alsoPlain = {}) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        if (kPlain.find(c) != std::string_view::npos || alsoPlain.find(c) != std::string_view::npos) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return result;
}

/// What is no escape stands for itself.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto digits = text.substr(std::min(i + 1, text.size()), 2);
        unsigned char byte = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        const bool isEscape =
            text[i] == '%' && digits.size() == 2 && error == std::errc() && end == digits.data() + digits.size();
        result += isEscape ? static_cast<char>(byte) : text[i];
        if (isEscape) i += 2;
    }
    return result;
}

}  // namespace

void Address::server(std::string_view text) {
    host = text;
    port = 0;
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos || !isPossibleHost(text.substr(0, colon))) return;
    if (const auto number = portOf(text.substr(colon + 1))) {
        host = text.substr(0, colon);
        port = *number;
    }
}

std::string Address::server() const { return port ? host + ":" + std::to_string(port) : host; }

std::string Address::fault() const {
    if (host.empty()) return "no server is named";
    if (!isPossibleHost(host) || hasControl(host)) return "\"" + onOneLine(host) + "\" can be no server's name";
    if (hasControl(user) || hasControl(password)) return "the user name or the password holds a control character";
    return hasControl(path) ? "the path \"" + onOneLine(path) + "\" holds a control character" : std::string();
}

std::string Address::link() const {
    return "FTP://" + escaped(user) + ":" + escaped(password) + "@" + server() + escapedPath(path);
}

std::optional<Address> Address::parse(std::string_view text) {
    constexpr std::string_view kScheme = "ftp://";
    if (!startsWithNoCase(text, kScheme)) return std::nullopt;
    text.remove_prefix(kScheme.size());
    const auto slash = std::min(text.find('/'), text.size());
    Address address;
    address.path = unescaped(text.substr(slash));
    auto authority = text.substr(0, slash);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
        const auto account = authority.substr(0, at);
        const auto colon = std::min(account.find(':'), account.size());
        address.user = unescaped(account.substr(0, colon));
        address.password = unescaped(account.substr(std::min(colon + 1, account.size())));
        authority.remove_prefix(at + 1);
    }
    address.server(authority);
    return address;
}

std::string escapedPath(std::string_view path) { return escaped(path, "/"); }

}  // namespace corvane
