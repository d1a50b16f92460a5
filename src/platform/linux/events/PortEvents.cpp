#include "platform/linux/events/PortEvents.h"

#include <array>
#include <linux/netlink.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace corvane {

PortEvents::PortEvents(LinuxRuntime& runtime, std::function<void()> handler)
    : runtime_(runtime), handler_(std::move(handler)) {
    constexpr unsigned kKernel = 1, kUdev = 2;  // the groups that each of both speaks to
    descriptor_ = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
    if (descriptor_ < 0) return;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = kKernel | kUdev;
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(std::exchange(descriptor_, -1));
        return;
    }
    runtime_.watch(descriptor_, EPOLLIN, [this](std::uint32_t) {
        if (isPortNamed()) runtime_.post(this, handler_);
    });
}

PortEvents::~PortEvents() {
    if (descriptor_ < 0) return;
    runtime_.forget(this);
    runtime_.unwatch(descriptor_);
    ::close(descriptor_);
}

bool PortEvents::isAboutPort(std::string_view message) {
    using namespace std::string_view_literals;
    return message.find("\0SUBSYSTEM=tty\0"sv) != std::string_view::npos;
}

/// Reads all that is there. Lost messages do not matter: whoever is told looks at everything anew.
bool PortEvents::isPortNamed() {
    std::array<char, 8192> message{};
    bool isNamed = false;
    for (;;) {
        const auto length = recv(descriptor_, message.data(), message.size(), 0);
        if (length <= 0) return isNamed;
        isNamed = isAboutPort({message.data(), static_cast<std::size_t>(length)}) || isNamed;
    }
}

}  // namespace corvane
