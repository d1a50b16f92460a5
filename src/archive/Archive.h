#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// One file of a zip; the name has no folder.
struct ArchivedFile {
    std::string name;
    std::string content;
};

/// What may be in a zip that somebody else made; more than that is refused before the memory is taken.
struct ArchiveLimits {
    std::size_t files = 32;
    std::size_t bytes = 64U << 20;  ///< of all files together, unpacked
};

/// The files as one zip, in memory. Empty with the reason in words when that cannot be made.
[[nodiscard]] std::string packed(const std::vector<ArchivedFile>& files, std::string& why);

/// The files of a zip. Nothing, with the reason as a part of a sentence in UTF-8, when it is none, is damaged, holds
/// more than the limits, or a name that could lead anywhere but beside the others.
[[nodiscard]] std::optional<std::vector<ArchivedFile>> unpacked(std::string_view zip, std::string& why,
                                                                const ArchiveLimits& limits = {});

}  // namespace corvane
