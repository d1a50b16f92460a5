#include "trust/Signature.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "text/Base64.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kSignature = 64, kWhole = 2 + 8 + kSignature;
constexpr std::string_view kUntrusted = "untrusted comment:", kTrusted = "trusted comment: ";
constexpr std::int64_t kDay = 24LL * 60 * 60, kLatest = 253402300799;  // the year 9999

}  // namespace

std::optional<Signature> Signature::parse(std::string_view text, std::string& why) {
    std::array<std::string_view, 4> line;
    Lines lines(text);
    for (auto& one : line) {
        if (!lines.next(one)) {
            why = "it is cut off";
            return std::nullopt;
        }
    }
    if (!line[0].starts_with(kUntrusted) || !line[2].starts_with(kTrusted)) {
        why = "it is no signature file of minisign's";
        return std::nullopt;
    }
    const auto first = fromBase64(trimmed(line[1])), second = fromBase64(trimmed(line[3]));
    if (!first || first->size() != kWhole || !second || second->size() != kSignature) {
        why = "what should be the signature in it is none";
        return std::nullopt;
    }
    if (!first->starts_with("Ed") && !first->starts_with("ED")) {
        why = "it is of a kind that is not known here";
        return std::nullopt;
    }
    Signature signature;
    signature.isOfHash = first->starts_with("ED");
    signature.keyId = keyIdText(first->substr(2, 8));
    signature.bytes = first->substr(10);
    signature.comment = line[2].substr(kTrusted.size());
    signature.ofComment = *second;
    return signature;
}

bool Signature::isGenuine(SignatureCheck& check, const PublicKey& key, std::string_view content) const {
    return isOfHash ? check.isGenuine(key.bytes, check.blake2b(content), bytes)
                    : check.isGenuine(key.bytes, content, bytes);
}

bool Signature::isCommentGenuine(SignatureCheck& check, const PublicKey& key) const {
    return check.isGenuine(key.bytes, bytes + comment, ofComment);
}

std::string Signature::field(std::string_view name) const {
    for (const auto& piece : split(comment, '\t')) {
        if (piece.starts_with(name)) return piece.substr(name.size());
    }
    return {};
}

std::optional<std::int64_t> Signature::signedAt() const {
    const auto text = field("timestamp:");
    std::int64_t seconds = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && seconds >= 0 && seconds <= kLatest ? std::optional(seconds) : std::nullopt;
}

std::string Signature::fileName() const { return field("file:"); }

/// Years are counted from March on, so that a leap day is the last of its year.
std::string utcText(std::int64_t secondsSince1970) {
    constexpr std::int64_t kDaysTo1970 = 719468, kEra = 146097;  // from March of the year 0; days of 400 years
    const auto seconds = std::clamp<std::int64_t>(secondsSince1970, 0, kLatest);
    const auto days = seconds / kDay + kDaysTo1970, ofEra = days % kEra;
    const auto year = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const auto ofYear = ofEra - (365 * year + year / 4 - year / 100);
    const auto month = (5 * ofYear + 2) / 153;
    const auto day = ofYear - (153 * month + 2) / 5 + 1;
    const auto isNext = month >= 10;
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d UTC",
                  static_cast<int>(days / kEra * 400 + year + isNext), static_cast<int>(isNext ? month - 9 : month + 3),
                  static_cast<int>(day), static_cast<int>(seconds % kDay / 3600), static_cast<int>(seconds % 3600 / 60),
                  static_cast<int>(seconds % 60));
    return text;
}

}  // namespace corvane
