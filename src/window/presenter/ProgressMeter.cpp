#include "window/presenter/ProgressMeter.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

constexpr std::uint32_t kRateWindow = 500;  // ms in which a rate is counted
constexpr double kSmoothing = 0.3;          // the weight of the latest window

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

void ProgressMeter::phase(RunPhase phase, std::uint32_t tick) {
    phase_ = phase;
    value_ = maximum_ = done_ = bytes_ = bytesTotal_ = windowUnits_ = 0;
    rate_ = 0;
    remaining_.reset();
    windowStart_ = tick;
    if (phase == RunPhase::idle) total_ = 0;
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

int ProgressMeter::percent() const {
    if (phase_ == RunPhase::program && total_ > 0) return static_cast<int>(std::min(done_, total_) * 100 / total_);
    return maximum_ > 0 ? static_cast<int>(value_ * 100 / maximum_) : 0;
}

bool ProgressMeter::isUnmeasured() const {
    switch (phase_) {
        case RunPhase::login:
        case RunPhase::bootLoader:
        case RunPhase::erase:
        case RunPhase::reset:
        case RunPhase::proof:
            return true;
        case RunPhase::information:
        case RunPhase::image:
            return bytes_ > 0 && bytesTotal_ <= 0;
        case RunPhase::idle:
        case RunPhase::scan:
        case RunPhase::selection:
        case RunPhase::program:
            break;
    }
    return false;
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
            break;
    }
    return "Asking the device whether it runs";
}

std::string ProgressMeter::text() const {
    auto text = phaseText();
    if (phase_ == RunPhase::program && done_ > 0) {
        text += ": " + std::to_string(percent()) + " %, " + std::to_string(done_);
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
    const bool counts = phase_ == RunPhase::program || (phase_ == RunPhase::image && maximum_ > 0);
    return counts ? std::to_string(percent()) + " % " + phaseText() : phaseText();
}

}  // namespace corvane
