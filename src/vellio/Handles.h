#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "vellio/Transport.h"

namespace corvane::vellio {

constexpr std::int16_t kTrue = -1;
constexpr std::int16_t kFalse = 0;
constexpr std::int32_t kLongestWait = 60000;  // ms that any setting may ask for

inline std::int16_t truth(bool value) { return value ? kTrue : kFalse; }

inline bool isIn(std::int32_t value, std::int32_t least, std::int32_t most) { return value >= least && value <= most; }

/// What the handles of the C interface stand for. A callback may destroy its own handle, so calls hold what they work
/// on.
struct Handles {
    std::map<std::int32_t, std::shared_ptr<Transport>> open;
    std::int32_t last = 0;

    std::shared_ptr<Transport> find(std::int32_t hVell) const {
        const auto found = open.find(hVell);
        return found == open.end() ? nullptr : found->second;
    }
};

/// A C interface leaves no other place for it: the one table of the library.
Handles& handles();

/// Runs an operation of one handle. No exception crosses the C interface: short of memory means the empty result.
template <typename Result, typename Operation>
Result with(std::int32_t hVell, Result empty, Operation operation) noexcept {
    try {
        const auto transport = handles().find(hVell);
        return transport ? operation(*transport) : empty;
    } catch (...) {
        return empty;
    }
}

template <typename Operation>
void with(std::int32_t hVell, Operation operation) noexcept {
    with(hVell, 0, [&operation](Transport& transport) {
        operation(transport);
        return 0;
    });
}

}  // namespace corvane::vellio
