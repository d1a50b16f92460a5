#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "face/FirmwareRecord.h"
#include "text/Profile.h"

namespace corvane {

/// firmware.inf taken apart by both of its readers, once for all that is asked of it.
class SiteInformation {
public:
    explicit SiteInformation(std::string content);

    /// Nothing when no file lies there or it cannot be read.
    [[nodiscard]] static std::optional<SiteInformation> load(const std::string& path);

    std::string value(std::string_view section, std::string_view key, std::string_view byDefault = {}) const {
        return infValue(profile_, section, key, byDefault);
    }
    const Profile& profile() const { return profile_; }

    /// The images on offer.
    const std::vector<FirmwareRecord>& records() const { return records_; }

private:
    Profile profile_;
    std::vector<FirmwareRecord> records_;
};

}  // namespace corvane
