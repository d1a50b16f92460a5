#pragma once

#include <cstdint>

namespace corvane {

/// The progress bar. The value is within 0 and the maximum.
class Progress {
public:
    virtual ~Progress() = default;
    virtual void progress(std::int64_t value, std::int64_t maximum) = 0;
};

}  // namespace corvane
