#include "trust/PublicKey.h"

#include "text/Base64.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kWhole = 2 + 8 + 32;  // kind, id, key

}  // namespace

std::optional<PublicKey> PublicKey::parse(std::string_view text, std::string& why) {
    std::string_view line;
    for (Lines lines(text); lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.starts_with("untrusted comment:")) continue;
        const auto bytes = fromBase64(line);
        if (!bytes || bytes->size() != kWhole) break;
        if (!bytes->starts_with("Ed")) {
            why = "it is a key of a kind that is not known here";
            return std::nullopt;
        }
        return PublicKey{keyIdText(bytes->substr(2, 8)), bytes->substr(10)};
    }
    why = "it holds no public key";
    return std::nullopt;
}

std::string keyIdText(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (auto at = bytes.rbegin(); at != bytes.rend(); ++at) {  // the last byte comes first
        const auto byte = static_cast<unsigned char>(*at);
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return text;
}

}  // namespace corvane
