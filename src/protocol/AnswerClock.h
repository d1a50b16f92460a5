#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/Runtime.h"

namespace corvane {

/// Knows when the answer to a record can come and when it has been coming with this device, so that an answer at
/// another time is seen as what it may be: somebody else's. Times are seconds. It does not own the runtime.
class AnswerClock {
public:
    explicit AnswerClock(Runtime& runtime) : runtime_(runtime) {}

    /// Another device: nothing is known of it. Behind a port without a line of its own (a pseudo-terminal) the rate
    /// says nothing about time; behind any other it does until the device proves the contrary.
    void beginDevice(bool hasLine);

    /// The line's settings, "rate,parity,data bits,stop bits", from the next record on.
    void settings(const std::string& text);

    /// So many bytes are written now, behind those that are still on their way.
    void sent(std::size_t bytes);

    /// How long what was written last may still be on the line.
    double untilCrossed() const;

    /// How long after that to wait for an answer, when nothing is owed and when something may be.
    double patience(bool isNothingOwed) const;

    /// How long from now an answer that comes as the last ones did takes to come.
    double untilAnswer() const;

    enum class Arrival { usual, early, late };

    /// What to think of an answer that came so many seconds ago.
    Arrival arrival(double ago = 0) const;

    /// An answer has come now, whosever it is.
    void answered();

    /// An answer has come now and was taken for the last record's. A proven one, with nothing else owed, teaches how
    /// slow this device is and whether the rate says anything.
    void taken(bool isProven);

private:
    enum class Pace { unknown, byRate, free };

    double sinceSent() const;
    bool isTooEarly(double ago = 0) const;

    Runtime& runtime_;
    Pace pace_ = Pace::unknown;
    double byteTime_ = 0;             // on the line
    double sentAt_ = 0;               // s of the day
    double onLine_ = 0;               // how long after that the last byte has crossed
    double slowest_ = 0;              // proven answer of this device, from the crossing on
    std::array<double, 8> lately_{};  // how long the last answers took, from the crossing on
    std::size_t answers_ = 0;
    double slow_ = 0;  // the slowest but one: a single one may have been held back on the way
};

}  // namespace corvane
