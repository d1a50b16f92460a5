#pragma once

#include <map>
#include <string>
#include <vector>

namespace corvane {

/// What the operator's file of port names says: lines "COM3=/dev/ttyUSB0" and "auto=off"; "#" begins a comment.
struct PortMapFile {
    std::map<int, std::string> paths;  ///< by port number
    bool listsOthers = true;           ///< false after "auto=off"

    /// A sentence, with its cure, for the file or a line of it that could not be used.
    std::vector<std::string> problems;
};

/// A file that does not exist says nothing.
PortMapFile readPortMapFile(const std::string& path);

}  // namespace corvane
