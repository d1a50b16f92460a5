#include "bench/OpenWatch.h"

#include <array>
#include <cstring>
#include <sys/inotify.h>

namespace corvane::bench {

OpenWatch::OpenWatch() : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "inotify_init1") {}

int OpenWatch::watch(const std::string& path, std::function<void()> lastClosed) {
    const int number = inotify_add_watch(inotify_.get(), path.c_str(), IN_OPEN | IN_CLOSE);
    if (number < 0) throw std::system_error(errno, std::generic_category(), path);
    nodes_[number] = {0, std::move(lastClosed)};
    return number;
}

void OpenWatch::unwatch(int number) {
    nodes_.erase(number);
    inotify_rm_watch(inotify_.get(), number);
}

bool OpenWatch::isHeld(int number) const {
    const auto node = nodes_.find(number);
    return node != nodes_.end() && node->second.holders > 0;
}

void OpenWatch::take() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    const auto count = ::read(inotify_.get(), buffer.data(), buffer.size());
    inotify_event event{};
    for (long at = 0; at < count; at += static_cast<long>(sizeof event + event.len)) {
        std::memcpy(&event, buffer.data() + at, sizeof event);
        const auto node = nodes_.find(event.wd);
        if (node == nodes_.end()) continue;
        if (event.mask & IN_OPEN) ++node->second.holders;
        if (event.mask & IN_CLOSE && --node->second.holders == 0) node->second.lastClosed();
    }
}

}  // namespace corvane::bench
