#pragma once

#include <cstdint>

#include "platform/Runtime.h"

namespace corvane {

/// A countdown in milliseconds for polling loops. It charges only the time that it sees between two checks, and
/// survives the wrap of the tick counter. It does not own the runtime. A fresh one is expired until it is started.
class clsTimeout {
public:
    explicit clsTimeout(Runtime& runtime);

    /// The period in milliseconds; setting it starts a new countdown at once.
    std::int32_t Timeout() const { return m_lTimeout; }
    void Timeout(std::int32_t lNewValue);

    /// Charges the time since the last check; True when nothing remains.
    bool IsTimeout();

    /// Starts a new countdown of the current period.
    void Reset();

    /// One step of a waiting loop: waits, checks, and about every 200 ms lets events run. With bIsNonDoEvents the time
    /// that those events take is not charged. Returns what IsTimeout returned.
    bool WaitTimeout(bool bIsNonDoEvents = false);

private:
    std::int32_t now() const { return static_cast<std::int32_t>(runtime_.tick()); }

    Runtime& runtime_;
    std::int32_t m_lStartTick;
    std::int32_t m_lRemaining = 0;
    std::int32_t m_lTimeout = 1000;
    std::int32_t m_lSinceEvents = 0;
};

}  // namespace corvane
