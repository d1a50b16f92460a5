#include "settings/OperatorSettings.h"

#include "platform/ProgramInfo.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// "True" in any case, or a number other than 0.
bool isTrue(const std::string& text) { return equalsNoCase(trimmed(text), "True") || leadingNumber(text) != 0; }

}  // namespace

void loadSettings(SettingsStore& store, Choices& choices) {
    const auto read = [&store](const std::string& key, const std::string& byDefault) {
        return store.GetSetting(kProgramTitle, "FTP", key, byDefault);
    };
    choices.userName = read("UserName", "");
    choices.password = read("Password", "");
    choices.offLine = isTrue(read("OffLine", "False"));
    choices.server = read("Server", defaultServer());
}

bool saveSettings(SettingsStore& store, const Choices& choices) {
    bool saved = true;
    const auto write = [&](const std::string& key, const std::string& value) {
        saved = store.SaveSetting(kProgramTitle, "FTP", key, value) && saved;
    };
    write("UserName", choices.userName);
    write("Password", choices.password);
    write("OffLine", choices.offLine ? "True" : "False");
    write("Server", choices.server);
    return saved;
}

}  // namespace corvane
