#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// The public half of a key that lists of images are signed with, as the minisign command writes it.
struct PublicKey {
    std::string id;     ///< 16 hexadecimal digits, by which a signature says which key it was made with
    std::string bytes;  ///< 32, of Ed25519

    /// From the content of a "*.pub" file, or from its second line alone. Nothing when it is no key, and why.
    [[nodiscard]] static std::optional<PublicKey> parse(std::string_view text, std::string& why);
};

/// The id as people read it, of the 8 bytes that stand for it in keys and signatures.
std::string keyIdText(std::string_view bytes);

}  // namespace corvane
