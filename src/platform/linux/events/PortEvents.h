#pragma once

#include <functional>
#include <string_view>

#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// Calls a handler from DoEvents when the kernel or udev says that a tty has come, gone or changed, while it lives.
/// udev's word comes after the kernel's, when the node has its owner. Where no such word is to be had (in a container,
/// say), it stays silent. The runtime is not owned.
class PortEvents {
public:
    PortEvents(LinuxRuntime& runtime, std::function<void()> handler);
    ~PortEvents();
    PortEvents(const PortEvents&) = delete;
    PortEvents& operator=(const PortEvents&) = delete;

    /// Whether a message of the kernel's or udev's is about a tty.
    static bool isAboutPort(std::string_view message);

private:
    bool isPortNamed();

    LinuxRuntime& runtime_;
    std::function<void()> handler_;
    int descriptor_;
};

}  // namespace corvane
