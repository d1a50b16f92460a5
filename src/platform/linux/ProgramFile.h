#pragma once

#include <string>

namespace corvane {

/// Why a file is no program that this machine can start: neither a whole ELF program for it (class and machine are this
/// one's, and every segment and section lies inside the file) nor a script whose interpreter is there. Empty when it is
/// one. Who made it is no matter here.
std::string programFault(const std::string& path);

}  // namespace corvane
