#pragma once

#include "platform/SignatureCheck.h"

namespace corvane {

/// Over libsodium. The constructor throws std::runtime_error when that cannot be used.
class SodiumSignatures : public SignatureCheck {
public:
    SodiumSignatures();
    bool isGenuine(std::string_view key, std::string_view message, std::string_view signature) override;
    std::string blake2b(std::string_view content) override;
};

}  // namespace corvane
