#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "face/Log.h"
#include "site/InfReader.h"

namespace corvane {

/// What firmware.inf says about one image, and what a run works with. Texts in Windows-1252.
struct FirmwareInformation {
    static constexpr int kLinks = 10;

    std::string product = "Un-Know";
    std::string version;
    std::string updateInfo;
    std::string firmwareFile;  ///< remote path
    std::int32_t ispBaudRate = -1;
    std::string digest;     ///< SHA-256 that the image must have, in lower case; empty when the site gives none
    bool isSigned = false;  ///< by somebody who is trusted, so that only a digest says which image is meant
    std::array<std::string, kLinks> linkTitle;
    std::array<std::string, kLinks> linkUrl;

    bool isKnown() const { return product != "Un-Know"; }
};

/// Reads the section that the text names up to its first blank (all of it without one). False, with the reason logged,
/// when there is no firmware.inf (the information stays untouched) or no product in that section (it is "Un-Know").
[[nodiscard]] bool FTP_CheckFirmware(InfReader& reader, Log& log, const std::string& szDeviceVersion,
                                     FirmwareInformation& information);

}  // namespace corvane
