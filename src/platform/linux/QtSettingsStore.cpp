#include "platform/linux/QtSettingsStore.h"

#include <QFile>
#include <QSettings>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/RawIni.h"
#include "platform/linux/UserFolders.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

// Bytes pass through Qt one to one, as Latin-1, so that even a value that is no UTF-8 survives.
QString toQt(const std::string& bytes) {
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}
std::string fromQt(const QString& text) { return text.toLatin1().toStdString(); }

bool readFormat(QIODevice& device, QSettings::SettingsMap& map) {
    for (const auto& [name, value] : readRawIni(device.readAll().toStdString())) map[toQt(name)] = toQt(value);
    return true;
}

bool writeFormat(QIODevice& device, const QSettings::SettingsMap& map) {
    RawSettings settings;
    for (auto at = map.begin(); at != map.end(); ++at) settings[fromQt(at.key())] = fromQt(at.value().toString());
    const auto text = QByteArray::fromStdString(writeRawIni(settings));
    return device.write(text) == text.size();
}

/// Qt keeps its formats for the life of the program.
QSettings::Format format() {
    static const QSettings::Format registered = QSettings::registerFormat("conf", readFormat, writeFormat);
    return registered;
}

/// Qt gives a new file to everybody and then keeps what it finds, so the file is made here first.
bool makePrivate(const std::string& path) {
    std::error_code error;
    const auto folder = fs::path(path).parent_path();
    if (!fs::exists(folder, error)) {
        fs::create_directories(folder.parent_path(), error);
        if (mkdir(folder.c_str(), 0700) < 0) return false;
    }
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0600);
    if (file < 0) return false;
    struct stat status {};
    const bool kept = fstat(file, &status) == 0 && S_ISREG(status.st_mode) && fchmod(file, 0600) == 0;
    return ::close(file) == 0 && kept;
}

/// Not when something lies there that is no file: a pipe would keep the program waiting.
bool isUsable(const std::string& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    return !fs::exists(status) || fs::is_regular_file(status);
}

}  // namespace

QtSettingsStore::QtSettingsStore(SecretStore& secrets) : QtSettingsStore(userConfigFolder(), secrets) {}

std::string QtSettingsStore::file(const std::string& application) const {
    return folder_ + "/" + application + "/" + application + ".conf";
}

std::string QtSettingsStore::GetSetting(const std::string& application, const std::string& section,
                                        const std::string& key, const std::string& byDefault) {
    if (!isUsable(file(application))) return byDefault;
    const QSettings settings(QFile::decodeName(file(application).c_str()), format());
    return fromQt(settings.value(toQt(section + "/" + key), toQt(byDefault)).toString());
}

bool QtSettingsStore::SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                                  const std::string& value) {
    const auto path = file(application);
    if (!makePrivate(path)) return false;
    QSettings settings(QFile::decodeName(path.c_str()), format());
    const auto name = toQt(section + "/" + key);
    const auto before = settings.value(name);
    settings.setValue(name, toQt(value));
    settings.sync();
    if (settings.status() == QSettings::NoError) return true;
    // Qt keeps what it could not write, would give it for the stored value and try to write it again: put it back.
    if (before.isValid()) {
        settings.setValue(name, before);
    } else {
        settings.remove(name);
    }
    return false;
}

std::vector<std::string> QtSettingsStore::problems(const std::string& application, bool holdsSecret) {
    const auto path = file(application);
    if (!isUsable(path)) return {path + " is no ordinary file: no settings are read or kept. Remove it."};
    struct stat status {};
    if (!holdsSecret || stat(path.c_str(), &status) < 0 || !(status.st_mode & (S_IRWXG | S_IRWXO))) return {};
    const auto open = path + " was open to other users of this computer, and a password stands in it. ";
    if (chmod(path.c_str(), 0600) < 0)
        return {open + "That could not be changed: " + std::strerror(errno) + ". Make it yours alone."};
    return {open + "Now it is yours alone. If somebody may have read it, change the password."};
}

}  // namespace corvane
