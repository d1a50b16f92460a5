#include "site/InfReader.h"

#include "platform/ProgramInfo.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

std::string InfReader::ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                                    const std::string& file) const {
    const auto path = file.empty() ? folder_.resolve("\\" + std::string(kProgramTitle) + ".INF") : file;
    try {
        return infValue(Profile(readFile(path)), section, key, byDefault);
    } catch (const RuntimeError&) {
        return std::string(byDefault);
    }
}

bool InfReader::take(const std::string& path) {
    information_ = SiteInformation::load(path);
    return information_.has_value();
}

const SiteInformation* InfReader::information() {
    if (!information_) information_ = SiteInformation::load(informationPath());
    return information_ ? &*information_ : nullptr;
}

}  // namespace corvane
