#pragma once

#include <string>

namespace corvane {

/// Where the desktop keeps passwords, encrypted and for this user: its keyring. A secret belongs to the settings file
/// that it would otherwise stand in. Texts in UTF-8, no zero bytes. Nobody is asked to unlock anything, and each call
/// returns within some seconds, whatever the desktop does.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    /// Empty when there is none, or none that can be had now.
    virtual std::string load(const std::string& settingsFile) = 0;

    /// An empty secret removes what is kept. False: nothing was changed, or nobody knows whether it was.
    [[nodiscard]] virtual bool save(const std::string& settingsFile, const std::string& secret) = 0;
};

/// A computer without a keyring.
class NoSecretStore : public SecretStore {
public:
    std::string load(const std::string&) override { return {}; }
    bool save(const std::string&, const std::string&) override { return false; }
};

}  // namespace corvane
