#include "bench/Pty.h"

#include <algorithm>
#include <array>
#include <asm/termbits.h>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace corvane::bench {
namespace {

void check(int result, const char* call) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), call);
}

Descriptor newMaster() {
    Descriptor master(open("/dev/ptmx", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "/dev/ptmx");
    int unlocked = 0;
    check(ioctl(master.get(), TIOCSPTLCK, &unlocked), "TIOCSPTLCK");
    return master;
}

std::string slavePath(int master) {
    unsigned number = 0;
    check(ioctl(master, TIOCGPTN, &number), "TIOCGPTN");
    return "/dev/pts/" + std::to_string(number);
}

void makeRaw(int slave) {
    termios2 line{};
    check(ioctl(slave, TCGETS2, &line), "TCGETS2");
    line.c_iflag = 0;
    line.c_oflag = 0;
    line.c_lflag = 0;
    line.c_cflag = CS8 | CREAD | CLOCAL | B9600;
    line.c_cc[VMIN] = 1;
    line.c_cc[VTIME] = 0;
    check(ioctl(slave, TCSETS2, &line), "TCSETS2");
}

/// The least of some tries; whatever is more comes from other programs at work.
std::int64_t leastCarryingTime(int from, int to) {
    using Clock = std::chrono::steady_clock;
    auto least = Clock::duration::max();
    for (int i = 0; i < 32; ++i) {
        const auto start = Clock::now();
        char byte = 0;
        pollfd carried{to, POLLIN, 0};
        if (write(from, &byte, 1) != 1 || poll(&carried, 1, 1000) != 1 || read(to, &byte, 1) != 1) return 0;
        least = std::min(least, Clock::now() - start);
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(least).count();
}

}  // namespace

Pty::Pty()
    : master_(newMaster()),
      slave_(ioctl(master_.get(), TIOCGPTPEER, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "TIOCGPTPEER"),
      path_(slavePath(master_.get())) {
    makeRaw(slave_.get());
    carryingTime_ = leastCarryingTime(slave_.get(), master_.get());
}

std::uint32_t Pty::hostRate() const {
    termios2 line{};
    // Asked of the master, the call answers for the slave.
    return ioctl(master_.get(), TCGETS2, &line) < 0 ? 0 : line.c_ospeed;
}

Bytes Pty::read() {
    std::array<std::uint8_t, 4096> buffer{};
    const auto count = ::read(master_.get(), buffer.data(), buffer.size());
    return count > 0 ? Bytes(buffer.begin(), buffer.begin() + count) : Bytes();
}

void Pty::write(const Bytes& bytes) {
    if (bytes.empty()) return;
    while (::write(master_.get(), bytes.data(), bytes.size()) < 0 && errno == EINTR) continue;
}

void Pty::discardUnread() { ioctl(slave_.get(), TCFLSH, TCIFLUSH); }

void Pty::release() { ioctl(slave_.get(), TIOCNXCL); }

}  // namespace corvane::bench
