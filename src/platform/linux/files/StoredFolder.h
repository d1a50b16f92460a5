#pragma once

#include <string>

namespace corvane {

/// Returns when the names in a folder are on the disk as they are now, so that what was put there, or taken away, is so
/// after a failure of the power too.
void storeFolder(const std::string& folder);

/// Makes a folder and those above it that are missing, all on the disk when this returns. The reason in words when that
/// was not possible.
std::string makeStoredFolder(const std::string& path);

}  // namespace corvane
