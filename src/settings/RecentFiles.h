#pragma once

#include <string>
#include <vector>

#include "platform/SettingsStore.h"

namespace corvane {

/// The local images that were chosen last, the newest first. Paths in the system's bytes. Owns nothing.
class RecentFiles {
public:
    static constexpr std::size_t kMost = 5;

    explicit RecentFiles(SettingsStore& store) : store_(store) {}

    /// Those that still exist.
    std::vector<std::string> list() const;

    /// False when it could not be stored.
    bool add(const std::string& path);

private:
    std::vector<std::string> stored() const;

    SettingsStore& store_;
};

}  // namespace corvane
