#pragma once

#include <functional>
#include <map>
#include <string>

#include "bench/Descriptor.h"

namespace corvane::bench {

/// Tells who comes to a device node and when the last one has gone. Throws std::system_error when the system cannot.
class OpenWatch {
public:
    OpenWatch();

    /// Readable when there is something to take.
    int descriptor() const { return inotify_.get(); }
    void take();

    /// Counts opens and closes from now on; lastClosed is called by take. The number forgets the path again.
    int watch(const std::string& path, std::function<void()> lastClosed);
    void unwatch(int number);

    bool isHeld(int number) const;

private:
    struct Node {
        int holders = 0;
        std::function<void()> lastClosed;
    };

    Descriptor inotify_;
    std::map<int, Node> nodes_;
};

}  // namespace corvane::bench
