#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// Ed25519 signatures, as a cryptographic library judges them.
class SignatureCheck {
public:
    virtual ~SignatureCheck() = default;

    /// Whether a signature (64 bytes) of this message was made with the secret half of this public key (32 bytes).
    virtual bool isGenuine(std::string_view key, std::string_view message, std::string_view signature) = 0;

    /// BLAKE2b of 64 bytes, which is what is signed in place of a long message.
    virtual std::string blake2b(std::string_view content) = 0;
};

/// Where the keys of those whom the operator trusts are found.
struct KeyPlaces {
    std::vector<std::string> folders;  ///< of "*.pub" files; paths in the system's bytes
    std::string makerKey{};            ///< one that the program was built with, as the line of such a file; or empty
};

}  // namespace corvane
