#include "platform/clsTimeout.h"

#include <algorithm>
#include <cstdlib>

namespace corvane {
namespace {

constexpr std::int32_t kMax = 2147483647;
constexpr std::int32_t kEventPeriod = 200;

std::int32_t withoutTopBit(std::int32_t tick) { return tick & kMax; }

/// Ticks are 32 bits read as signed, so a countdown may pass 2^31 and the wrap to 0. A gap that can only be the counter
/// jumping backwards counts as endless: better a time-out too early than one after 24 days.
std::int32_t elapsedBetween(std::int32_t start, std::int32_t now) {
    if (now >= 0 && start >= 0) return std::abs(now - start);
    if (now < 0 && start < 0) return std::abs(withoutTopBit(now) - withoutTopBit(start));
    if (now < 0) {
        const std::int32_t difference = withoutTopBit(now) - start;
        return difference < 0 ? difference + kMax : kMax;
    }
    const std::int32_t left = withoutTopBit(start);
    return left > static_cast<std::int64_t>(now) + 1 ? kMax - left + 1 + now : kMax;
}

}  // namespace

clsTimeout::clsTimeout(Runtime& runtime) : runtime_(runtime), m_lStartTick(now()) {}

void clsTimeout::Timeout(std::int32_t lNewValue) {
    m_lTimeout = lNewValue;
    Reset();
}

void clsTimeout::Reset() {
    m_lStartTick = now();
    m_lRemaining = m_lTimeout;
    m_lSinceEvents = 0;
}

bool clsTimeout::IsTimeout() {
    const std::int32_t elapsed = elapsedBetween(m_lStartTick, now());
    m_lRemaining = m_lRemaining > elapsed ? m_lRemaining - elapsed : 0;
    const bool calm = elapsed < kEventPeriod && m_lSinceEvents < kEventPeriod;
    m_lSinceEvents = calm ? std::min(m_lSinceEvents + elapsed, kEventPeriod) : kEventPeriod;
    m_lStartTick = now();
    return m_lRemaining < 1;
}

bool clsTimeout::WaitTimeout(bool bIsNonDoEvents) {
    runtime_.Sleep(1);
    const bool expired = IsTimeout();
    if (!expired && m_lSinceEvents >= kEventPeriod) {
        runtime_.DoEvents();
        if (bIsNonDoEvents) m_lStartTick = now();
        m_lSinceEvents = 0;
    }
    return expired;
}

}  // namespace corvane
