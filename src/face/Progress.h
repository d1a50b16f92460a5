#pragma once

#include <cstdint>

namespace corvane {

/// The progress bar. The value is within 0 and the maximum.
class Progress {
public:
    virtual ~Progress() = default;
    virtual void progress(std::int64_t value, std::int64_t maximum) = 0;

    /// Bytes of a transfer so far, and of the whole; 0 when that is not known.
    virtual void transferred(std::int64_t bytes, std::int64_t total) = 0;
};

}  // namespace corvane
