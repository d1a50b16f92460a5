#include "site/SiteInformation.h"

#include <utility>

#include "platform/files/Files.h"
#include "site/FirmwareListParser.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

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
