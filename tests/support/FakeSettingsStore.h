#pragma once

#include <map>
#include <string>

#include "platform/SettingsStore.h"

namespace corvane::fakes {

/// Settings in memory, by "application/section/key". As long as isReadOnly is set nothing can be saved.
class FakeSettingsStore : public SettingsStore {
public:
    std::map<std::string, std::string> values;
    std::map<std::string, std::string> before;  ///< what counts as long as nothing else is saved
    bool isReadOnly = false;

    std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                           const std::string& byDefault) override {
        for (const auto* stored : {&values, &before}) {
            const auto found = stored->find(application + "/" + section + "/" + key);
            if (found != stored->end()) return found->second;
        }
        return byDefault;
    }

    bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                     const std::string& value) override {
        if (!isReadOnly) values[application + "/" + section + "/" + key] = value;
        return !isReadOnly;
    }
};

}  // namespace corvane::fakes
