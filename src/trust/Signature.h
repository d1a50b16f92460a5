#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/SignatureCheck.h"
#include "trust/PublicKey.h"

namespace corvane {

/// The signature of one file, as the minisign command writes it: of the file itself or, which is its usual way, of the
/// file's BLAKE2b; and a second one, of the first and of a comment in which the signer says what and when he signed.
struct Signature {
    bool isOfHash = true;
    std::string keyId;    ///< as in PublicKey
    std::string bytes;    ///< 64
    std::string comment;  ///< can be trusted once isCommentGenuine
    std::string ofComment;

    /// From the content of a "*.minisig" file. Nothing when it is none, and why: a part of a sentence.
    [[nodiscard]] static std::optional<Signature> parse(std::string_view text, std::string& why);

    bool isGenuine(SignatureCheck& check, const PublicKey& key, std::string_view content) const;
    bool isCommentGenuine(SignatureCheck& check, const PublicKey& key) const;

    /// What the comment says, which minisign writes unless its user writes another: when it was signed, in seconds
    /// since 1970, and the file's name.
    std::optional<std::int64_t> signedAt() const;
    std::string fileName() const;

private:
    std::string field(std::string_view name) const;
};

/// "2026-11-26 06:30:05 UTC".
std::string utcText(std::int64_t secondsSince1970);

}  // namespace corvane
