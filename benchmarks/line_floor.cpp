// What a pseudo-terminal and this machine take of a paced exchange when neither side ever sleeps: no program can be
// faster here. A record's bytes one way and one byte back, again and again, elapsed over wire time.
// Usage: bench_line_floor RATE

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRecord = 44, kAnswer = 1, kExchanges = 2000;
char bytes[64];

void awaitInput(int descriptor) {
    pollfd input{descriptor, POLLIN, 0};
    while (::poll(&input, 1, 0) == 0) ::sched_yield();
}

/// Answers each record when its last byte, and the answer's, would have crossed the wire.
[[noreturn]] void answer(int line, Clock::duration wire) {
    for (int i = 0; i < kExchanges; ++i) {
        awaitInput(line);
        const auto due = Clock::now() + wire;
        int seen = 0;
        while (seen < kRecord) {
            awaitInput(line);
            seen += static_cast<int>(::read(line, bytes, sizeof bytes));
        }
        while (Clock::now() < due) ::sched_yield();
        if (::write(line, bytes, kAnswer) != kAnswer) break;
    }
    ::_exit(0);
}

int checked(int result) {
    if (result < 0) throw std::runtime_error("there is no pseudo-terminal");
    return result;
}

}  // namespace

int main(int count, char** arguments) {
    const double rate = count > 1 ? std::atof(arguments[1]) : 115200;
    const std::chrono::duration<double> wire((kRecord + kAnswer) * 10 / rate);
    const int master = checked(::open("/dev/ptmx", O_RDWR | O_NOCTTY));
    checked(::unlockpt(master));
    const int line = checked(::open(::ptsname(master), O_RDWR | O_NOCTTY));
    termios settings{};
    ::tcgetattr(line, &settings);
    ::cfmakeraw(&settings);
    ::tcsetattr(line, TCSANOW, &settings);
    const auto device = checked(::fork());
    if (device == 0) answer(master, std::chrono::duration_cast<Clock::duration>(wire));
    const auto start = Clock::now();
    for (int i = 0; i < kExchanges; ++i) {
        if (::write(line, bytes, kRecord) != kRecord) return 1;
        awaitInput(line);
        if (::read(line, bytes, sizeof bytes) != kAnswer) return 1;
    }
    const std::chrono::duration<double> took = Clock::now() - start;
    ::waitpid(device, nullptr, 0);
    std::printf("floor %.4f\n", took / wire / kExchanges);
}
