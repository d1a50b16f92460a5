#include "platform/EventRuntime.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr int kMostHandlers = 1000;  // of one dispatch, so that it ends even if they keep posting

}  // namespace

void EventRuntime::DoEvents() {
    dispatch();
    if (pump_) pump_();
}

void EventRuntime::dispatch() {
    if (dispatching_) return;
    struct Guard {
        bool& flag;
        explicit Guard(bool& f) : flag(f) { flag = true; }
        ~Guard() { flag = false; }
    } guard(dispatching_);
    moveIo();
    // An idle window is woken by descriptors alone, so what handlers post in turn must not be left lying here.
    for (int round = 0; round < kMostHandlers && !posted_.empty(); ++round) {
        const Posted next = std::move(posted_.front());
        posted_.pop_front();
        next.handler();
    }
    serviceSources();
    for (std::size_t i = 0; i < sources_.size(); ++i) sources_[i]->dispatch();  // they may come and go meanwhile
}

void EventRuntime::forget(const void* owner) {
    std::erase_if(posted_, [owner](const Posted& posted) { return posted.owner == owner; });
}

bool EventRuntime::bringsNewsAtOnce() {
    if (!idle_) return false;
    const auto before = news_;
    if (!moveIo()) idle_();
    return news_ != before;
}

bool EventRuntime::isAnySourceBusy() const {
    return std::any_of(sources_.begin(), sources_.end(), [](PolledSource* source) { return source->isBusy(); });
}

bool EventRuntime::serviceSources() {
    bool news = false;
    for (auto* source : sources_) news = source->service() || news;
    if (news) countNews();
    return news;
}

}  // namespace corvane
