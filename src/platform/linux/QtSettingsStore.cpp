#include "platform/linux/QtSettingsStore.h"

#include <QFile>
#include <QSettings>
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
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) return false;
    const bool kept = fchmod(file, 0600) == 0;
    return ::close(file) == 0 && kept;
}

}  // namespace

QtSettingsStore::QtSettingsStore() : QtSettingsStore(userConfigFolder()) {}

std::string QtSettingsStore::fileOf(const std::string& application) const {
    return folder_ + "/" + application + "/" + application + ".conf";
}

std::string QtSettingsStore::GetSetting(const std::string& application, const std::string& section,
                                        const std::string& key, const std::string& byDefault) {
    const QSettings settings(QFile::decodeName(fileOf(application).c_str()), format());
    return fromQt(settings.value(toQt(section + "/" + key), toQt(byDefault)).toString());
}

bool QtSettingsStore::SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                                  const std::string& value) {
    const auto path = fileOf(application);
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

}  // namespace corvane
