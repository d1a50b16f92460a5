#pragma once

#include "platform/SettingsStore.h"

namespace corvane {

/// One file for an application, <folder>/<application>/<application>.conf, in which a section is a group. Hand-written
/// values read back as written (RawIni.h tells the rules). The file is for this user alone, replaced whole, and keeps
/// what this program does not know, but for comments. Something else in its place, a pipe say, counts as an empty file
/// that cannot be written.
class QtSettingsStore : public SettingsStore {
public:
    /// In this user's configuration folder. It does not own the keyring.
    explicit QtSettingsStore(SecretStore& secrets);
    QtSettingsStore(std::string folder, SecretStore& secrets) : folder_(std::move(folder)), secrets_(secrets) {}

    std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                           const std::string& byDefault) override;
    bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                     const std::string& value) override;
    std::vector<std::string> problems(const std::string& application, bool holdsSecret) override;
    std::string file(const std::string& application) const override;
    SecretStore& secrets() override { return secrets_; }

private:
    std::string folder_;
    SecretStore& secrets_;
};

}  // namespace corvane
