#include "platform/linux/trust/SodiumSignatures.h"

#include <sodium.h>
#include <stdexcept>

namespace corvane {
namespace {

const unsigned char* bytesOf(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

}  // namespace

SodiumSignatures::SodiumSignatures() {
    if (sodium_init() < 0) throw std::runtime_error("The library for signatures cannot be started");
}

bool SodiumSignatures::isGenuine(std::string_view key, std::string_view message, std::string_view signature) {
    return key.size() == crypto_sign_PUBLICKEYBYTES && signature.size() == crypto_sign_BYTES &&
           crypto_sign_verify_detached(bytesOf(signature), bytesOf(message), message.size(), bytesOf(key)) == 0;
}

std::string SodiumSignatures::blake2b(std::string_view content) {
    std::string hash(crypto_generichash_BYTES_MAX, '\0');
    crypto_generichash(reinterpret_cast<unsigned char*>(hash.data()), hash.size(), bytesOf(content), content.size(),
                       nullptr, 0);
    return hash;
}

}  // namespace corvane
