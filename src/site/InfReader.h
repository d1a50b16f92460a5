#pragma once

#include <string>
#include <string_view>

#include "platform/ProfileFile.h"
#include "platform/ProgramFolder.h"

namespace corvane {

/// This program's way of reading profile values: "\n" in a value stands for a line break and "\0" for a NUL.
class InfReader {
public:
    InfReader(ProfileFile& profile, const ProgramFolder& folder) : profile_(profile), folder_(folder) {}

    /// The value, or the default when it is missing or empty. An empty file means the program's own profile.
    std::string ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                             const std::string& file = {});

private:
    ProfileFile& profile_;
    const ProgramFolder& folder_;
};

}  // namespace corvane
