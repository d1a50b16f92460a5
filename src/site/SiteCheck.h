#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "face/FirmwareRecord.h"
#include "platform/Digest.h"
#include "site/ListTrust.h"
#include "text/Profile.h"

namespace corvane {

/// Something that whoever runs a site should mend; texts in UTF-8. The section is empty for the file as a whole.
struct SiteFinding {
    std::string section;
    std::string text;
};

/// What an operator would get from a site.
struct SiteReport {
    std::vector<FirmwareRecord> offered;  ///< as the selection lists it; texts in Windows-1252
    std::vector<SiteFinding> findings;
    std::string signer;  ///< "Signed by ...", UTF-8; empty where nobody did, or no key is known
};

/// Reads firmware.inf the way both of its readers will, and the files that it names. It owns neither the digest nor the
/// trust.
class SiteCheck {
public:
    /// The content of a file of the site, by its path from the site's root (the bytes that firmware.inf holds); nothing
    /// when it is not there.
    using Fetch = std::function<std::optional<std::string>(const std::string& path)>;

    SiteCheck(Digest& digest, Fetch fetch) : digest_(digest), fetch_(std::move(fetch)) {}

    /// Checks a site whose firmware.inf lies in a local file.
    [[nodiscard]] SiteReport check(const std::string& informationFile);

    /// Then also whether those who know a key would believe the list, and what they would not be offered of it.
    void judgeBy(const ListTrust& trust) { trust_ = &trust; }

private:
    void checkSignature(const std::string& content);
    void checkHeads(std::string_view content);
    void checkKeys(std::string_view content);
    void checkRecord(const FirmwareRecord& record);
    void compare(const std::string& section, const std::string& key, const std::string& listed);
    void checkRate(const std::string& section);
    void checkLinks(const std::string& section);
    void checkImageFile(const std::string& section);
    void checkDigest(const std::string& section, const std::string& digest);
    void checkVersions();
    void checkProgram();
    std::string value(const std::string& section, const std::string& key);
    bool exists(const std::string& path);
    void find(const std::string& section, const std::string& text);

    Digest& digest_;
    Fetch fetch_;
    const ListTrust* trust_ = nullptr;
    const Profile* profile_ = nullptr;  // while a check is on
    SiteReport report_;
};

}  // namespace corvane
