#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bench/ConfigFolder.h"
#include "bench/DeviceSpec.h"

namespace corvane::bench {

/// What the command line asks for. Paths are the system's bytes; an empty one is not wanted.
struct BenchOptions {
    std::string configFolder;
    std::string replay;                         ///< a report or a recording whose device is to answer
    bool isFast = false;                        ///< without the recorded delays
    std::optional<models::DeviceOptions> then;  ///< how it goes on where the program departs
    std::vector<DeviceSpec> devices;            ///< each with a number of its own among its kind
    std::vector<Setting> settings;
    std::string image;
    bool verifies = false;
    std::string transcript;
    std::string readyFile;
    std::string report;
    std::vector<std::string> command;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

/// Throws std::invalid_argument with what is wrong. The program's own name is not among the arguments.
BenchOptions benchOptions(const std::vector<std::string>& arguments);

std::string benchHelp();

}  // namespace corvane::bench
