#include "site/InfReader.h"

#include "platform/ProgramInfo.h"
#include "text/Text.h"

namespace corvane {

std::string InfReader::ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                                    const std::string& file) {
    const auto path = file.empty() ? folder_.resolve("\\" + std::string(kProgramTitle) + ".INF") : file;
    const auto value = profile_.value(section, key, path);
    if (value.empty()) return std::string(byDefault);
    return replaceAll(replaceAll(value, "\\n", "\r\n"), "\\0", std::string_view("\0", 1));
}

}  // namespace corvane
