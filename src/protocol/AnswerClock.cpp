#include "protocol/AnswerClock.h"

#include <algorithm>

#include "text/SettingsText.h"

namespace corvane {
namespace {

constexpr double kDay = 86400;
constexpr double kAnswerTime = 0.5;   // s that the given dialogue waits for an answer
constexpr double kLongestOwed = 1.5;  // s after which no answer comes any more
constexpr double kLate = 0.1;         // s behind the crossing; a device that writes a page answers sooner
constexpr double kCrossed = 7.0 / 8;  // of a record's time on the line; the rest is for clocks that differ

}  // namespace

void AnswerClock::beginDevice(bool hasLine) {
    pace_ = hasLine ? Pace::unknown : Pace::free;
    slowest_ = slow_ = 0;
    lately_.fill(0);
}

void AnswerClock::settings(const std::string& text) {
    byteTime_ = 0;
    if (const auto line = parseSettingsText(text); line && line->baudRate > 0) {
        const double bits = 1 + line->dataBits + (line->parity ? 1 : 0) + 1 + line->stopBits / 2.0;
        byteTime_ = bits / line->baudRate;
    }
    onLine_ = 0;
}

void AnswerClock::sent(std::size_t bytes) {
    onLine_ = std::max(0.0, onLine_ - sinceSent()) + byteTime_ * static_cast<double>(bytes);
    sentAt_ = runtime_.secondsOfDay();
}

double AnswerClock::sinceSent() const {
    const double passed = runtime_.secondsOfDay() - sentAt_;
    return passed < 0 ? passed + kDay : passed;
}

double AnswerClock::untilCrossed() const { return std::max(0.0, onLine_ - sinceSent()); }

double AnswerClock::patience(bool isNothingOwed) const {
    if (isNothingOwed) return kLongestOwed;
    return std::clamp(1.5 * slow_, kAnswerTime, kLongestOwed);
}

/// By the fastest of the last ones: a device that writes a page now and then is slower just then.
double AnswerClock::untilAnswer() const {
    return onLine_ - sinceSent() + *std::min_element(lately_.begin(), lately_.end());
}

void AnswerClock::answered() { lately_[answers_++ % lately_.size()] = sinceSent() - onLine_; }

bool AnswerClock::isTooEarly(double ago) const { return sinceSent() - ago < kCrossed * onLine_; }

AnswerClock::Arrival AnswerClock::arrival(double ago) const {
    if (pace_ == Pace::byRate && isTooEarly(ago)) return Arrival::early;
    return sinceSent() - ago - onLine_ > std::max(kLate, 3 * slow_) ? Arrival::late : Arrival::usual;
}

void AnswerClock::taken(bool isProven) {
    // A first answer that comes before its record can have crossed the line shows that there is no such line: a native
    // USB port, say, which takes any rate and sends at its own.
    if (pace_ == Pace::unknown) pace_ = isTooEarly() ? Pace::free : Pace::byRate;
    if (!isProven) return;
    if (isTooEarly()) pace_ = Pace::free;
    const double took = sinceSent() - onLine_;
    slow_ = std::max(slow_, std::min(took, slowest_));
    slowest_ = std::max(slowest_, took);
}

}  // namespace corvane
