#include "SerialRigs.h"

#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace corvane {

PseudoTerminalRig::~PseudoTerminalRig() {
    if (occupant_ >= 0) ::close(occupant_);
}

void PseudoTerminalRig::occupy() {
    occupant_ = ::open(line.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (occupant_ < 0 || flock(occupant_, LOCK_EX | LOCK_NB) < 0) throw std::runtime_error("cannot occupy the port");
}

bool waitUntil(Runtime& runtime, const std::function<bool()>& condition) {
    for (int waits = 0; waits < 500 && !condition(); ++waits) runtime.WaitActivity(10);
    return condition();
}

}  // namespace corvane
