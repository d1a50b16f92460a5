#pragma once

#include <string>

namespace corvane {

/// The name of a file that this process is filling, in the folder where it is to end up: ".corvane-PID-", then what
/// tells it from others, then ".part".
std::string partName(const std::string& distinction);

/// Removes such files of processes that are no more: killed programs leave them.
void removeLeftFiles(const std::string& folder);

}  // namespace corvane
