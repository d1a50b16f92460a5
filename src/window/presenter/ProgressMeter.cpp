#include "window/presenter/ProgressMeter.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

constexpr std::uint32_t kRateWindow = 500;  // ms in which a rate is counted
constexpr double kSmoothing = 0.3;          // the weight of the latest window

/// What a phase takes of an usual run, in any unit, and the seconds after which half of it is thought to be done while
/// nothing can be measured (0: it waits for the operator).
struct Share {
    double weight = 0, halfTime = 0;
    RunPhase phase = RunPhase::idle;
    bool isOnLineOnly = false;
};

constexpr Share kShares[] = {
    {4, 2, RunPhase::login, true}, {3, 1, RunPhase::information, true}, {12, 10, RunPhase::scan},
    {0, 0, RunPhase::selection},   {9, 5, RunPhase::image, true},       {4, 2, RunPhase::bootLoader},
    {8, 3, RunPhase::erase},       {52, 20, RunPhase::program},         {3, 1, RunPhase::reset},
    {5, 3, RunPhase::proof},
};

/// Seconds as people want to read them: exact when few, else in steps.
int calmSeconds(double seconds) {
    const double step = seconds < 10 ? 1 : seconds < 60 ? 5 : 30;
    return static_cast<int>(std::ceil(seconds / step) * step);
}

std::string timeText(int seconds) {
    if (seconds < 60) return std::to_string(seconds) + " s left";
    const int halves = (seconds + 29) / 30;
    return "about " + std::to_string(halves / 2) + (halves % 2 ? ".5" : "") + " min left";
}

std::string sizeText(double bytes) {
    if (bytes < 10000) return std::to_string(std::llround(bytes)) + " bytes";
    if (bytes < 10000000) return std::to_string(std::llround(bytes / 1000)) + " kB";
    return std::to_string(std::llround(bytes / 1000000)) + " MB";
}

}  // namespace

void ProgressMeter::begin(bool isOnLine, std::uint32_t tick) {
    isOnLine_ = isOnLine;
    shown_ = 0;
    phase(RunPhase::idle, tick);
}

void ProgressMeter::phase(RunPhase phase, std::uint32_t tick) {
    phase_ = phase;
    value_ = maximum_ = done_ = bytes_ = bytesTotal_ = windowUnits_ = 0;
    rate_ = 0;
    remaining_.reset();
    windowStart_ = phaseStart_ = tick;
    if (phase == RunPhase::idle) total_ = 0;
}

void ProgressMeter::end(bool isUpdated) {
    constexpr double kWhole = 1000;
    shown_ = isUpdated ? kWhole : 0;
}

void ProgressMeter::progress(std::int64_t value, std::int64_t maximum, std::uint32_t tick) {
    const bool isStep = value > value_ || (value == value_ && value == maximum && maximum > 0);
    value_ = value;
    maximum_ = maximum;
    if (value == 0) {
        done_ = 0;
    } else if (phase_ == RunPhase::program && isStep) {
        ++done_;
        countRate(1, tick);
        showRemaining();
    }
}

void ProgressMeter::transfer(std::int64_t bytes, std::int64_t total, std::uint32_t tick) {
    countRate(bytes - bytes_, tick);
    bytes_ = bytes;
    bytesTotal_ = total;
}

void ProgressMeter::countRate(std::int64_t units, std::uint32_t tick) {
    windowUnits_ += units;
    const std::uint32_t passed = tick - windowStart_;
    if (passed < kRateWindow) return;
    const double latest = static_cast<double>(windowUnits_) * 1000 / passed;
    rate_ = rate_ == 0 ? latest : rate_ + kSmoothing * (latest - rate_);
    windowStart_ = tick;
    windowUnits_ = 0;
}

/// The shown time only falls, so that it does not jump up and down; it is set anew when it is off by half.
void ProgressMeter::showRemaining() {
    if (rate_ <= 0 || total_ <= 0) return;
    const double seconds = static_cast<double>(std::max<std::int64_t>(0, total_ - done_)) / rate_;
    const int calm = calmSeconds(seconds);
    if (!remaining_ || calm < *remaining_ || seconds > *remaining_ * 1.5 + 2) remaining_ = calm;
}

double ProgressMeter::doneInPhase(std::uint32_t tick) const {
    const auto share = [](std::int64_t done, std::int64_t whole) {
        return static_cast<double>(std::min(done, whole)) / static_cast<double>(whole);
    };
    if (phase_ == RunPhase::program && total_ > 0) return share(done_, total_);
    if (phase_ == RunPhase::image && bytesTotal_ > 0) return share(bytes_, bytesTotal_);
    if (maximum_ > 0 && value_ > 0) return share(value_, maximum_);
    for (const auto& one : kShares) {
        const double seconds = (tick - phaseStart_) / 1000.0;
        if (one.phase == phase_ && one.halfTime > 0) return seconds / (seconds + one.halfTime);
    }
    return 0;
}

/// A try that is repeated starts its phases anew, and the share stays where it was.
int ProgressMeter::permille(std::uint32_t tick) {
    constexpr double kMost = 999;  // the whole is for a device that is updated
    if (phase_ == RunPhase::idle) return static_cast<int>(shown_);
    double whole = 0, before = 0;
    for (const auto& one : kShares) {
        if (one.isOnLineOnly && !isOnLine_) continue;
        if (one.phase < phase_) before += one.weight;
        if (one.phase == phase_) before += one.weight * doneInPhase(tick);
        whole += one.weight;
    }
    shown_ = std::max(shown_, std::min(kMost, before / whole * 1000));
    return static_cast<int>(shown_);
}

std::string ProgressMeter::phaseText() const {
    switch (phase_) {
        case RunPhase::idle:
            return {};
        case RunPhase::login:
            return "Logging in to the site";
        case RunPhase::information:
            return "Fetching the firmware list";
        case RunPhase::scan:
            return "Looking for the device";
        case RunPhase::selection:
            return "Waiting for your choice";
        case RunPhase::image:
            return "Fetching the image";
        case RunPhase::bootLoader:
            return "Switching to the boot loader";
        case RunPhase::erase:
            return "Erasing";
        case RunPhase::program:
            return "Programming";
        case RunPhase::reset:
            return "Restarting the device";
        case RunPhase::proof:
            return "Asking the device whether it runs";
        case RunPhase::removal:
            return "Waiting until the device is taken off";
        case RunPhase::nextDevice:
            break;
    }
    return "Waiting for the next device";
}

std::string ProgressMeter::text() const {
    auto text = phaseText();
    if (phase_ == RunPhase::program && done_ > 0) {
        text += ": " + std::to_string(done_);
        if (total_ > 0) text += " of " + std::to_string(total_);
        text += " records";
        if (rate_ > 0) text += ", " + std::to_string(std::llround(rate_)) + " a second";
        if (remaining_ && *remaining_ > 0) text += ", " + timeText(*remaining_);
    } else if (bytes_ > 0) {
        text += ": " + sizeText(static_cast<double>(bytes_));
        if (bytesTotal_ > 0) text += " of " + sizeText(static_cast<double>(bytesTotal_));
        if (rate_ > 0) text += ", " + sizeText(rate_) + " a second";
    }
    return text;
}

std::string ProgressMeter::title() const {
    if (phase_ == RunPhase::idle) return {};
    const bool isWaiting = phase_ == RunPhase::removal || phase_ == RunPhase::nextDevice;
    return percent() > 0 && !isWaiting ? std::to_string(percent()) + " % " + phaseText() : phaseText();
}

}  // namespace corvane
