#pragma once

#include <string>

#include "models/Device.h"

namespace corvane::bench {

/// "1 erase, 130 records (2 refused), 1 restart, …" for people, on one line.
std::string countsOf(const models::Device& device);

/// What became of a device's memory, and whether it counts for or against the run.
struct Verdict {
    enum class Kind { untouched, equal, different };
    Kind kind = Kind::untouched;
    std::string text;
};
Verdict verdictOn(const models::Device& device, const models::Image& image);

}  // namespace corvane::bench
