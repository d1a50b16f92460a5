#pragma once

#include <functional>
#include <map>
#include <string>

#include "bench/Descriptor.h"

namespace corvane::bench {

/// Tells when a program comes to a device node that nobody held, and when the last one has gone. The system reports two
/// programs that come at the very same time as one, so it must not matter when a handler runs once too often or too
/// little. Throws std::system_error when the system cannot watch.
class OpenWatch {
public:
    using Handler = std::function<void(bool isHeld)>;

    OpenWatch();

    /// Readable when there is something to take. Whoever also reads what programs write to the node takes this first:
    /// then the handler runs before anything that a new program has written is heard.
    int descriptor() const { return inotify_.get(); }
    void take();

    /// From now on take calls the handler; who holds the node already does not count. The number ends it again.
    int watch(const std::string& path, Handler handler);
    void unwatch(int number);

private:
    struct Node {
        int holders = 0;
        Handler handler;
    };

    Descriptor inotify_;
    std::map<int, Node> nodes_;
};

}  // namespace corvane::bench
