#include "support/PseudoTerminal.h"

#include <asm/termbits.h>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>

namespace corvane::fakes {

PseudoTerminal::PseudoTerminal() : far_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (far_ < 0 || grantpt(far_) < 0 || unlockpt(far_) < 0) throw std::runtime_error("no pseudo-terminal");
    path_ = ptsname(far_);
}

void PseudoTerminal::makeRaw() const {
    termios2 line{};
    if (ioctl(far_, TCGETS2, &line) < 0) throw std::runtime_error("no line settings");
    line.c_iflag = line.c_oflag = line.c_lflag = 0;
    if (ioctl(far_, TCSETS2, &line) < 0) throw std::runtime_error("no raw line");
}

void PseudoTerminal::say(const std::string& bytes) const {
    if (::write(far_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the pseudo-terminal takes no more");
    }
}

std::string PseudoTerminal::heard() const {
    std::string all;
    char chunk[4096];
    for (ssize_t count = 0; (count = ::read(far_, chunk, sizeof chunk)) > 0;) {
        all.append(chunk, static_cast<std::size_t>(count));
    }
    return all;
}

std::uint32_t PseudoTerminal::rate() const {
    termios2 line{};
    if (ioctl(far_, TCGETS2, &line) < 0) throw std::runtime_error("no line settings");
    return line.c_ospeed;
}

void PseudoTerminal::setRate(std::uint32_t rate) const {
    termios2 line{};
    if (ioctl(far_, TCGETS2, &line) < 0) throw std::runtime_error("no line settings");
    line.c_cflag = (line.c_cflag & ~static_cast<tcflag_t>(CBAUD)) | BOTHER;
    line.c_ispeed = line.c_ospeed = rate;
    if (ioctl(far_, TCSETS2, &line) < 0) throw std::runtime_error("no such rate");
}

void PseudoTerminal::unplug() {
    if (far_ >= 0) ::close(far_);
    far_ = -1;
}

}  // namespace corvane::fakes
