#include "bench/OpenWatch.h"

#include <array>
#include <cstring>
#include <sys/inotify.h>

namespace corvane::bench {

OpenWatch::OpenWatch() : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "inotify_init1") {}

int OpenWatch::watch(const std::string& path, Handler handler) {
    const int number = inotify_add_watch(inotify_.get(), path.c_str(), IN_OPEN | IN_CLOSE);
    if (number < 0) throw std::system_error(errno, std::generic_category(), path);
    nodes_[number] = {0, std::move(handler)};
    return number;
}

void OpenWatch::unwatch(int number) {
    nodes_.erase(number);
    inotify_rm_watch(inotify_.get(), number);
}

void OpenWatch::take() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    const auto count = ::read(inotify_.get(), buffer.data(), buffer.size());
    inotify_event event{};
    for (long at = 0; at < count; at += static_cast<long>(sizeof event + event.len)) {
        std::memcpy(&event, buffer.data() + at, sizeof event);
        const auto found = nodes_.find(event.wd);
        if (found == nodes_.end()) continue;
        auto& node = found->second;
        if (event.mask & IN_OPEN && ++node.holders == 1) node.handler(true);
        if (event.mask & IN_CLOSE && node.holders > 0 && --node.holders == 0) node.handler(false);
    }
}

}  // namespace corvane::bench
