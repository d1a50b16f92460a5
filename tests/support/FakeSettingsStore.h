#pragma once

#include <map>
#include <string>

#include "platform/SettingsStore.h"

namespace corvane::fakes {

/// Settings in memory, by "application/section/key". As long as isReadOnly is set nothing can be saved.
class FakeSettingsStore : public SettingsStore {
public:
    std::map<std::string, std::string> values;
    bool isReadOnly = false;

    std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                           const std::string& byDefault) override {
        const auto found = values.find(application + "/" + section + "/" + key);
        return found == values.end() ? byDefault : found->second;
    }

    bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                     const std::string& value) override {
        if (!isReadOnly) values[application + "/" + section + "/" + key] = value;
        return !isReadOnly;
    }
};

}  // namespace corvane::fakes
