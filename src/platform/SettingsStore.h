#pragma once

#include <string>
#include <vector>

#include "platform/SecretStore.h"

namespace corvane {

/// The operator's settings between two starts; texts in UTF-8.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    /// The stored text, or the default when there is none.
    virtual std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                                   const std::string& byDefault) = 0;

    /// On disk when it returns; False when it could not be written, with the old value kept.
    virtual bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                             const std::string& value) = 0;

    /// What is wrong with an application's file, and what was done about it, a sentence each, in UTF-8: one that others
    /// may read is taken from them when it holds a secret.
    virtual std::vector<std::string> problems(const std::string& /*application*/, bool /*holdsSecret*/) { return {}; }

    /// An application's file, in the system's bytes; empty where there is none.
    virtual std::string file(const std::string& /*application*/) const { return {}; }

    /// Where what nobody may read is kept, rather than in that file.
    virtual SecretStore& secrets() = 0;
};

}  // namespace corvane
