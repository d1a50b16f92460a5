#include "site/SiteInformation.h"

#include <algorithm>
#include <utility>

#include "site/FirmwareListParser.h"
#include "text/Text.h"

namespace corvane {

SiteInformation::SiteInformation(std::string content, std::optional<Voucher> voucher)
    : profile_(std::move(content)),
      voucher_(std::move(voucher)),
      records_(FirmwareListParser().parse(profile_.content())) {}

bool SiteInformation::hasDigest(std::string_view section) const {
    constexpr std::size_t kDigits = 64;
    const auto digest = value(section, "SHA256");
    return digest.size() == kDigits && digest.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

std::string SiteInformation::nameOf(std::string_view digest) const {
    std::vector<std::string> names;
    for (const auto& record : records_) {
        if (!equalsNoCase(value(record.section, "SHA256"), digest)) continue;
        const auto name =
            std::string(trimmed(value(record.section, "Product") + " " + value(record.section, "Version")));
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return joined(names, ", ");
}

}  // namespace corvane
