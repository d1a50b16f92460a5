#pragma once

#include <string>

namespace corvane {

/// The operator's settings between two starts; texts in UTF-8.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    /// The stored text, or the default when there is none.
    virtual std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                                   const std::string& byDefault) = 0;

    /// On disk when it returns; False when it could not be written, with the old value kept.
    virtual bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                             const std::string& value) = 0;
};

}  // namespace corvane
