#include "app/ConnectionSettings.h"

#include "app/ProgramInfo.h"
#include "text/Number.h"

namespace corvane {

ConnectionSettings ConnectionSettings::load(SettingsStore& store) {
    ConnectionSettings settings;
    const double type = leadingNumber(store.GetSetting(kProgramTitle, "FTP", "AccessType", "0"));
    settings.accessType = type == 1 ? 1 : type == 2 ? 2 : 0;
    settings.proxy = store.GetSetting(kProgramTitle, "FTP", "Proxy", "");
    return settings;
}

bool ConnectionSettings::save(SettingsStore& store) const {
    const bool saved = store.SaveSetting(kProgramTitle, "FTP", "AccessType", std::to_string(accessType));
    return store.SaveSetting(kProgramTitle, "FTP", "Proxy", proxy) && saved;
}

}  // namespace corvane
