#pragma once

#include <string>
#include <vector>

#include "platform/SettingsStore.h"
#include "settings/Choices.h"
#include "settings/ConnectionSettings.h"

namespace corvane {

/// Everything that is kept between two starts of the program. It is read where it is needed, through this class alone,
/// and nothing is held in memory, so that what a dialog writes counts from then on. The store is not owned. Each
/// function that writes returns False when something could not be written.
///
///     FTP/UserName, Password, Server   the account and the site; the password stands here where there is no keyring
///     FTP/Keyring                      False: the password stands here though the desktop has a keyring
///     FTP/OffLine                      True: local files instead of the site
///     FTP/HandOverAddress              True: a reference of the site is opened by its address, password included
///     FTP/AccessType, Proxy            0 the environment's proxy, 1 none, 2 the one that Proxy names
///     FTP/Encryption                   off, try (the default) or require
///     FTP/Authorities                  a file of certificates in place of the system's
///     Update/AskVersion                False: an updated device is not asked for its version
///     Update/SpareBattery              False: programming is as fast on battery as it is on mains
///     Update/ImageLimit                MiB that an image may have; 64 when it is missing
///     Query/LastROM                    the section that was chosen last, the next selection's proposal
///     Recent/File1 to File5            the local images that were chosen last, the newest first
class StoredSettings {
public:
    static constexpr std::size_t kMostRecentFiles = 5;

    explicit StoredSettings(SettingsStore& store) : store_(store) {}

    /// The operator's account, server and mode; what else was chosen stays as it is. A password that stands in the file
    /// counts before that of the keyring.
    void load(Choices& choices) const;

    /// Writes what is another now than it was when it was loaded: a copy of the program that closes later does not undo
    /// what another one has stored meanwhile. A password that stands in the file moves to the keyring that takes it.
    [[nodiscard]] bool save(const Choices& choices, const Choices& loaded);

    /// What is wrong with the store, and what was done about it, a sentence each, in UTF-8.
    std::vector<std::string> problems();

    ConnectionSettings connection() const;
    [[nodiscard]] bool save(const ConnectionSettings& connection, const ConnectionSettings& loaded);

    /// Whether the desktop gets the address of a site's file, with the account in it, instead of the file.
    bool handsOverAddresses() const;

    /// In Windows-1252, as the site writes it; empty when none was ever chosen.
    std::string lastSection() const;
    bool saveLastSection(const std::string& section);

    /// Paths, in the system's bytes, of those that still exist.
    std::vector<std::string> recentFiles() const;
    bool addRecentFile(const std::string& path);

private:
    std::size_t imageLimit() const;

    struct Key;
    struct Keys;

    std::string read(const Key& key, const std::string& byDefault = {}) const;
    bool write(const Key& key, const std::string& value);
    bool writeChanged(const Key& key, const std::string& value, const std::string& loaded);
    bool savePassword(const std::string& password, const std::string& loaded);
    bool usesKeyring() const;
    std::vector<std::string> storedFiles() const;

    SettingsStore& store_;
};

}  // namespace corvane
