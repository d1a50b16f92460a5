#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace corvane {

/// Who answers for a file; UTF-8.
struct Voucher {
    std::string name;  ///< of the key, as this computer calls it
    std::string keyId;
    std::optional<std::int64_t> time{};  ///< when it was signed, in seconds since 1970, when the signer says so
};

/// "Signed by NAME, key ID, on DATE."
std::string signedText(const Voucher& voucher);

/// Who answers for what is to be installed, for people; UTF-8. Empty where no keys are known.
struct Vouching {
    std::string name{};     ///< of the key; empty when nobody does
    std::string brief{};    ///< a sentence
    std::string details{};  ///< another that says it all
};

/// Whether somebody who is trusted answers for a file: who does or, as a part of a sentence in UTF-8, why nobody.
struct Judgement {
    std::optional<Voucher> voucher{};
    std::string fault{};
};

}  // namespace corvane
