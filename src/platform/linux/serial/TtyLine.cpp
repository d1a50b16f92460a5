#include "platform/linux/serial/TtyLine.h"

#include <asm/termbits.h>
#include <cerrno>
#include <fcntl.h>
#include <linux/serial.h>
#include <linux/tty_flags.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace corvane {
namespace {

using Kind = OpenFailure::Kind;

Kind kindOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENXIO:
        case ENODEV:
            return Kind::notThere;
        case EACCES:
        case EPERM:
            return Kind::noPermission;
        case EBUSY:
        case EWOULDBLOCK:
            return Kind::inUse;
        case ENOTTY:
            return Kind::noSerialPort;
        default:
            return Kind::other;
    }
}

bool isPseudoTerminal(const struct stat& node) {
    constexpr unsigned kFirstMajor = 136;  // device numbers of the slave sides
    constexpr unsigned kLastMajor = 143;
    return major(node.st_rdev) >= kFirstMajor && major(node.st_rdev) <= kLastMajor;
}

/// Small reads at once instead of large ones later. Drivers without such a choice are as fast as they are.
void preferLowLatency(int descriptor) {
    serial_struct driver{};
    if (ioctl(descriptor, TIOCGSERIAL, &driver) < 0 || driver.flags & ASYNC_LOW_LATENCY) return;
    driver.flags |= ASYNC_LOW_LATENCY;
    ioctl(descriptor, TIOCSSERIAL, &driver);
}

std::uint32_t lastError() { return static_cast<std::uint32_t>(errno); }

}  // namespace

OpenFailure TtyLine::open(const std::string& path) {
    OpenFailure failure{Kind::none, path, 0};
    failure.kind = take(path);
    if (failure.kind != Kind::none) {
        failure.systemError = errno;
        if (descriptor_ >= 0) ::close(descriptor_);
        descriptor_ = -1;
    }
    return failure;
}

/// The steps of opening; the first that fails leaves its reason in errno.
Kind TtyLine::take(const std::string& path) {
    struct stat node {};
    if (stat(path.c_str(), &node) < 0) return kindOf(errno);
    if (!S_ISCHR(node.st_mode)) {
        errno = ENOTTY;
        return Kind::noSerialPort;
    }
    pseudo_ = isPseudoTerminal(node);
    descriptor_ = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ < 0) return kindOf(errno);
    if (!isatty(descriptor_)) return Kind::noSerialPort;
    if (flock(descriptor_, LOCK_EX | LOCK_NB) < 0) return kindOf(errno);
    // On a pseudo-terminal this mark ("open for one program alone") would outlive a killed program for as long as the
    // other side is open.
    if (!pseudo_) ioctl(descriptor_, TIOCEXCL);
    termios2 line{};
    if (ioctl(descriptor_, TCGETS2, &line) < 0) return kindOf(errno);
    makeRaw(line);
    if (ioctl(descriptor_, TCSETS2, &line) < 0) return kindOf(errno);
    discardInput();
    preferLowLatency(descriptor_);
    startCounting();
    return Kind::none;
}

void TtyLine::close() {
    if (descriptor_ < 0) return;
    if (!pseudo_) {
        discardOutput();
        ioctl(descriptor_, TIOCNXCL);
    }
    ::close(descriptor_);
    descriptor_ = -1;
}

std::uint32_t TtyLine::configure(const LineSetup& setup) const {
    if (!isPossible(setup.state)) return EINVAL;
    termios2 before{};
    if (ioctl(descriptor_, TCGETS2, &before) < 0) return lastError();
    termios2 line = before;
    apply(setup, line);
    if (ioctl(descriptor_, TCSETS2, &line) < 0) return lastError();
    if (pseudo_) return 0;
    if (ioctl(descriptor_, TCGETS2, &line) < 0) return lastError();
    if (hasTaken(stateOf(line), setup.state)) return 0;
    ioctl(descriptor_, TCSETS2, &before);
    return EINVAL;
}

std::uint32_t TtyLine::read(CommState& state) const {
    termios2 line{};
    if (ioctl(descriptor_, TCGETS2, &line) < 0) return lastError();
    state = stateOf(line);
    return 0;
}

void TtyLine::setControlLines(bool rts, bool dtr, bool driverOwnsRts) const {
    const int ours = driverOwnsRts ? TIOCM_DTR : TIOCM_DTR | TIOCM_RTS;
    const int on = ((rts ? TIOCM_RTS : 0) | (dtr ? TIOCM_DTR : 0)) & ours;
    const int off = ours & ~on;
    if (on) ioctl(descriptor_, TIOCMBIS, &on);
    if (off) ioctl(descriptor_, TIOCMBIC, &off);
}

void TtyLine::setBreak(bool on) const { ioctl(descriptor_, on ? TIOCSBRK : TIOCCBRK); }

bool TtyLine::isOn(int modemBit) const {
    int bits = 0;
    return ioctl(descriptor_, TIOCMGET, &bits) == 0 && bits & modemBit;
}

int TtyLine::unsent() const {
    int bytes = 0;
    return ioctl(descriptor_, TIOCOUTQ, &bytes) == 0 ? bytes : 0;
}

void TtyLine::discardInput() const { ioctl(descriptor_, TCFLSH, TCIFLUSH); }
void TtyLine::discardOutput() const { ioctl(descriptor_, TCFLSH, TCOFLUSH); }

void TtyLine::startCounting() {
    serial_icounter_struct counts{};
    framingErrors_.reset();
    if (ioctl(descriptor_, TIOCGICOUNT, &counts) == 0) framingErrors_ = counts.frame;
}

int TtyLine::newFramingErrors() {
    serial_icounter_struct counts{};
    if (!framingErrors_ || ioctl(descriptor_, TIOCGICOUNT, &counts) < 0) return 0;
    const int before = framingErrors_.value();
    framingErrors_ = counts.frame;
    return counts.frame - before;
}

}  // namespace corvane
