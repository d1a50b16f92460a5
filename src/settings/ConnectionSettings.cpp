#include "settings/ConnectionSettings.h"

#include "platform/ProgramInfo.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

ConnectionSettings ConnectionSettings::load(SettingsStore& store) {
    ConnectionSettings settings;
    const double type = leadingNumber(store.GetSetting(kProgramTitle, "FTP", "AccessType", "0"));
    settings.accessType = type == 1 ? 1 : type == 2 ? 2 : 0;
    settings.proxy = store.GetSetting(kProgramTitle, "FTP", "Proxy", "");
    settings.asksVersion = !equalsNoCase(store.GetSetting(kProgramTitle, "Update", "AskVersion", "True"), "False");
    return settings;
}

bool ConnectionSettings::save(SettingsStore& store) const {
    bool saved = true;
    const auto write = [&](const char* section, const char* key, const std::string& value) {
        saved = store.SaveSetting(kProgramTitle, section, key, value) && saved;
    };
    write("FTP", "AccessType", std::to_string(accessType));
    write("FTP", "Proxy", proxy);
    write("Update", "AskVersion", asksVersion ? "True" : "False");
    return saved;
}

}  // namespace corvane
