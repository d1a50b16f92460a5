#include "settings/StoredSettings.h"

#include <algorithm>
#include <array>

#include "platform/ProgramInfo.h"
#include "platform/files/Files.h"
#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

struct StoredSettings::Key {
    const char* section;
    std::string name;
};

struct StoredSettings::Keys {
    static inline const Key userName{"FTP", "UserName"}, password{"FTP", "Password"}, keyring{"FTP", "Keyring"},
        server{"FTP", "Server"}, offLine{"FTP", "OffLine"}, accessType{"FTP", "AccessType"}, proxy{"FTP", "Proxy"},
        encryption{"FTP", "Encryption"}, authorities{"FTP", "Authorities"}, askVersion{"Update", "AskVersion"},
        spareBattery{"Update", "SpareBattery"}, imageLimit{"Update", "ImageLimit"},
        handOverAddress{"FTP", "HandOverAddress"}, lastSection{"Query", "LastROM"};
    static Key recentFile(std::size_t place) { return {"Recent", "File" + std::to_string(place + 1)}; }
};

namespace {

constexpr std::array<const char*, 3> kEncryptions = {"off", "try", "require"};

/// "True" in any case, or a number other than 0.
bool isTrue(const std::string& text) { return equalsNoCase(trimmed(text), "True") || leadingNumber(text) != 0; }

const char* textOf(bool value) { return value ? "True" : "False"; }

}  // namespace

const char* nameOf(SiteRoute::Encryption encryption) { return kEncryptions[static_cast<std::size_t>(encryption)]; }

std::optional<SiteRoute::Encryption> encryptionNamed(const std::string& name) {
    for (std::size_t i = 0; i < kEncryptions.size(); ++i) {
        if (equalsNoCase(name, kEncryptions[i])) return static_cast<SiteRoute::Encryption>(i);
    }
    return std::nullopt;
}

std::string StoredSettings::read(const Key& key, const std::string& byDefault) const {
    return store_.GetSetting(kProgramTitle, key.section, key.name, byDefault);
}

bool StoredSettings::write(const Key& key, const std::string& value) {
    return store_.SaveSetting(kProgramTitle, key.section, key.name, value);
}

void StoredSettings::load(Choices& choices) const {
    choices.userName = read(Keys::userName);
    choices.password = read(Keys::password);
    if (choices.password.empty() && usesKeyring()) choices.password = store_.secrets().load(store_.file(kProgramTitle));
    choices.offLine = isTrue(read(Keys::offLine, "False"));
    choices.server = read(Keys::server, defaultServer());
    choices.mostImageBytes = imageLimit();
}

/// A number of MiB that is none, or below 1, leaves the limit as it is.
std::size_t StoredSettings::imageLimit() const {
    constexpr double kMiB = 1 << 20, kMost = 1024;
    const double limit = leadingNumber(read(Keys::imageLimit));
    return limit < 1 ? ImageReading::kMostBytes : static_cast<std::size_t>(std::min(limit, kMost) * kMiB);
}

bool StoredSettings::writeChanged(const Key& key, const std::string& value, const std::string& loaded) {
    return value == loaded || write(key, value);
}

bool StoredSettings::save(const Choices& choices, const Choices& loaded) {
    bool saved = writeChanged(Keys::userName, choices.userName, loaded.userName);
    saved = savePassword(choices.password, loaded.password) && saved;
    saved = writeChanged(Keys::offLine, textOf(choices.offLine), textOf(loaded.offLine)) && saved;
    return writeChanged(Keys::server, choices.server, loaded.server) && saved;
}

bool StoredSettings::usesKeyring() const { return !equalsNoCase(read(Keys::keyring, "True"), "False"); }

bool StoredSettings::savePassword(const std::string& password, const std::string& loaded) {
    const auto inFile = read(Keys::password);
    const auto& wanted = password == loaded ? inFile : password;
    if (password == loaded && inFile.empty()) return true;
    if (usesKeyring() && store_.secrets().save(store_.file(kProgramTitle), wanted))
        return inFile.empty() || write(Keys::password, "");
    return wanted == inFile || write(Keys::password, wanted);
}

/// A proxy's address may hold a password, too.
std::vector<std::string> StoredSettings::problems() {
    const bool hasPassword = !read(Keys::password).empty() || read(Keys::proxy).find('@') != std::string::npos;
    return store_.problems(kProgramTitle, hasPassword);
}

ConnectionSettings StoredSettings::connection() const {
    ConnectionSettings connection;
    const double type = leadingNumber(read(Keys::accessType, "0"));
    connection.accessType = type == 1 ? 1 : type == 2 ? 2 : 0;
    connection.proxy = read(Keys::proxy);
    connection.encryption = encryptionNamed(read(Keys::encryption)).value_or(connection.encryption);
    connection.authorities = read(Keys::authorities);
    connection.asksVersion = !equalsNoCase(read(Keys::askVersion, "True"), "False");
    connection.sparesBattery = !equalsNoCase(read(Keys::spareBattery, "True"), "False");
    return connection;
}

bool StoredSettings::save(const ConnectionSettings& connection, const ConnectionSettings& loaded) {
    bool saved =
        writeChanged(Keys::accessType, std::to_string(connection.accessType), std::to_string(loaded.accessType));
    saved = writeChanged(Keys::proxy, connection.proxy, loaded.proxy) && saved;
    saved = writeChanged(Keys::encryption, nameOf(connection.encryption), nameOf(loaded.encryption)) && saved;
    saved = writeChanged(Keys::authorities, connection.authorities, loaded.authorities) && saved;
    saved = writeChanged(Keys::askVersion, textOf(connection.asksVersion), textOf(loaded.asksVersion)) && saved;
    return writeChanged(Keys::spareBattery, textOf(connection.sparesBattery), textOf(loaded.sparesBattery)) && saved;
}

bool StoredSettings::handsOverAddresses() const { return isTrue(read(Keys::handOverAddress, "False")); }

std::string StoredSettings::lastSection() const { return fromUtf8(read(Keys::lastSection)); }

bool StoredSettings::saveLastSection(const std::string& section) { return write(Keys::lastSection, toUtf8(section)); }

std::vector<std::string> StoredSettings::storedFiles() const {
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < kMostRecentFiles; ++i) {
        auto path = read(Keys::recentFile(i));
        if (!path.empty()) paths.push_back(std::move(path));
    }
    return paths;
}

std::vector<std::string> StoredSettings::recentFiles() const {
    auto paths = storedFiles();
    std::erase_if(paths, [](const std::string& path) { return !FileExists(path); });
    return paths;
}

bool StoredSettings::addRecentFile(const std::string& path) {
    auto paths = storedFiles();
    std::erase(paths, path);
    paths.insert(paths.begin(), path);
    paths.resize(kMostRecentFiles);
    bool saved = true;
    for (std::size_t i = 0; i < kMostRecentFiles; ++i) saved = write(Keys::recentFile(i), paths[i]) && saved;
    return saved;
}

}  // namespace corvane
