#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "face/FirmwareRecord.h"
#include "text/Profile.h"
#include "trust/Voucher.h"

namespace corvane {

/// firmware.inf taken apart by both of its readers, once for all that is asked of it.
class SiteInformation {
public:
    explicit SiteInformation(std::string content, std::optional<Voucher> voucher = {});

    std::string value(std::string_view section, std::string_view key, std::string_view byDefault = {}) const {
        return infValue(profile_, section, key, byDefault);
    }
    const Profile& profile() const { return profile_; }

    /// The images on offer.
    const std::vector<FirmwareRecord>& records() const { return records_; }

    /// Who signed it; nobody where no keys are known.
    const std::optional<Voucher>& voucher() const { return voucher_; }

    /// Whether a section says which file it means, which the signature then vouches for.
    bool hasDigest(std::string_view section) const;

    /// The product and version of the images with this digest, "A V1, B V2"; empty when there is none. Windows-1252.
    std::string nameOf(std::string_view digest) const;

private:
    Profile profile_;
    std::optional<Voucher> voucher_;
    std::vector<FirmwareRecord> records_;
};

}  // namespace corvane
