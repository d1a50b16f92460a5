#include "vellio/NodeLock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace corvane::vellio {

NodeLock::~NodeLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

NodeLock::NodeLock(NodeLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

bool NodeLock::take(const std::string& node, Refusal& refusal) {
    descriptor_ = ::open(node.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return true;
    refusal.isInUse = descriptor_ >= 0 && errno == EWOULDBLOCK;
    refusal.words = node + ": " + (refusal.isInUse ? "in use by another program" : std::strerror(errno));
    return false;
}

}  // namespace corvane::vellio
