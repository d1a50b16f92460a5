#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "face/RunView.h"

namespace corvane {

/// Turns a run's phases and progress into what a person wants to read: how far the whole run has come, records, rate
/// and remaining time. The share of the run never falls, moves on while nothing can be measured, and is whole only when
/// the device is updated. The time is counted in records of a smoothed rate and does not jump. Ticks are milliseconds
/// that may wrap.
class ProgressMeter {
public:
    /// A run begins; on line there is more to do.
    void begin(bool isOnLine, std::uint32_t tick);
    void phase(RunPhase phase, std::uint32_t tick);

    /// The run has ended. The bar is full when the device is updated, else it is empty.
    void end(bool isUpdated);

    /// What the image holds, before it is programmed.
    void records(std::int64_t total) { total_ = total; }

    /// The progress bar's value and maximum; while an image is programmed each rise is one record.
    void progress(std::int64_t value, std::int64_t maximum, std::uint32_t tick);

    /// Bytes of a transfer so far, and of the whole (0 when that is not known).
    void transfer(std::int64_t bytes, std::int64_t total, std::uint32_t tick);

    /// The share of the whole run that is done by now, in thousandths.
    int permille(std::uint32_t tick);
    int percent() const { return static_cast<int>(shown_) / 10; }  ///< of what permille gave last

    std::int64_t recordsDone() const { return done_; }

    /// Seconds until the image is programmed; nothing as long as that is a guess.
    std::optional<int> remaining() const { return remaining_; }

    /// "Programming", "Erasing", …; empty while nothing runs.
    std::string phaseText() const;

    /// One line with what is measured: "Programming: 210 of 466 records, 250 a second, 1 s left".
    std::string text() const;

    /// The line for the window's title: "45 % Programming".
    std::string title() const;

private:
    void countRate(std::int64_t units, std::uint32_t tick);
    void showRemaining();
    double doneInPhase(std::uint32_t tick) const;

    bool isOnLine_ = false;
    double shown_ = 0;              // thousandths of the whole run
    std::uint32_t phaseStart_ = 0;  // tick
    RunPhase phase_ = RunPhase::idle;
    std::int64_t value_ = 0;
    std::int64_t maximum_ = 0;
    std::int64_t done_ = 0;
    std::int64_t total_ = 0;
    std::int64_t bytes_ = 0;
    std::int64_t bytesTotal_ = 0;
    std::uint32_t windowStart_ = 0;  // of the time in which the rate is being counted
    std::int64_t windowUnits_ = 0;
    double rate_ = 0;  // records or bytes a second, smoothed
    std::optional<int> remaining_;
};

}  // namespace corvane
