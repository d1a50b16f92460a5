#include "vellio/EventQueue.h"

#include <algorithm>
#include <limits>

namespace corvane::vellio {
namespace {

constexpr std::size_t kMostEvents = 256;
constexpr auto kLargest = std::numeric_limits<std::int32_t>::max();

}  // namespace

void EventQueue::add(Event event) {
    if (!event.isOfDevice()) {
        const auto same = [&event](const Event& waiting) { return waiting.code == event.code; };
        const auto found = std::find_if(events_.begin(), events_.end(), same);
        if (found != events_.end()) {
            const auto before = event.isOfLoss() ? found->parameter : 0;
            found->parameter = event.parameter + std::min(before, kLargest - event.parameter);
            return;
        }
    }
    if (events_.size() >= kMostEvents) takeOfDevice();
    events_.push_back(std::move(event));
}

std::optional<Event> EventQueue::take() {
    if (events_.empty()) return std::nullopt;
    Event event = std::move(events_.front());
    events_.pop_front();
    return event;
}

std::optional<Event> EventQueue::takeOfDevice() {
    const auto found =
        std::find_if(events_.begin(), events_.end(), [](const Event& event) { return event.isOfDevice(); });
    if (found == events_.end()) return std::nullopt;
    Event event = std::move(*found);
    events_.erase(found);
    return event;
}

}  // namespace corvane::vellio
