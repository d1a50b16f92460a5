#include "site/SiteInformation.h"

#include <utility>

#include "platform/Files.h"
#include "site/FirmwareListParser.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

std::string infValue(const Profile& profile, std::string_view section, std::string_view key,
                     std::string_view byDefault) {
    const auto value = profile.value(section, key);
    if (value.empty()) return std::string(byDefault);
    return replaceAll(replaceAll(value, "\\n", "\r\n"), "\\0", std::string_view("\0", 1));
}

SiteInformation::SiteInformation(std::string content)
    : profile_(std::move(content)), records_(FirmwareListParser().parse(profile_.content())) {}

std::optional<SiteInformation> SiteInformation::load(const std::string& path) {
    if (!FileExists(path)) return std::nullopt;
    try {
        return SiteInformation(readFile(path));
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

}  // namespace corvane
