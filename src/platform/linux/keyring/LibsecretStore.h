#pragma once

#include "platform/SecretStore.h"

namespace corvane {

/// The default keyring of the user's desktop, over the session's D-Bus; as if there were none where there is no bus,
/// nobody who keeps secrets on it, or the keyring is locked. The library has a thread of its own for the bus, which
/// takes no signals.
class LibsecretStore : public SecretStore {
public:
    static constexpr int kPatience = 2000;  ///< ms that a call may take

    std::string load(const std::string& settingsFile) override;
    bool save(const std::string& settingsFile, const std::string& secret) override;
};

}  // namespace corvane
