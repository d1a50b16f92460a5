#include "bench/Pty.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "bench/OpenWatch.h"

namespace corvane::bench {
namespace {

TEST(Pty, IsAsNewForTheNextProgram) {
    Pty pty;
    const auto openPort = [&] { return Descriptor(open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK), "port"); };
    {
        const auto first = openPort();
        ioctl(first.get(), TIOCEXCL);
        pty.write(Bytes{'o', 'l', 'd'});
    }
    pty.release();
    const auto second = openPort();
    pty.discardUnread();
    int isExclusive = -1;
    ioctl(second.get(), TIOCGEXCL, &isExclusive);
    EXPECT_EQ(isExclusive, 0);
    char buffer[8];
    EXPECT_EQ(::read(second.get(), buffer, sizeof buffer), -1);
    pty.write(Bytes{'n', 'e', 'w'});
    pollfd readable{second.get(), POLLIN, 0};
    poll(&readable, 1, 10000);
    EXPECT_EQ(::read(second.get(), buffer, sizeof buffer), 3);
}

TEST(OpenWatch, TellsWhoComesAndGoes) {
    Pty pty;
    OpenWatch watch;
    std::string told;
    watch.watch(pty.path(), [&](bool isHeld) { told += isHeld ? "+" : "-"; });
    const auto openPort = [&] {
        return std::make_unique<Descriptor>(open(pty.path().c_str(), O_RDWR | O_NOCTTY), "port");
    };
    const auto taken = [&] {
        watch.take();
        return std::exchange(told, "");
    };
    EXPECT_EQ(taken(), "") << "the bench itself does not count";
    auto first = openPort();
    EXPECT_EQ(taken(), "+");
    auto second = openPort();
    EXPECT_EQ(taken(), "");
    first.reset();
    EXPECT_EQ(taken(), "");
    second.reset();
    second = openPort();
    EXPECT_EQ(taken(), "-+");
    second.reset();
    EXPECT_EQ(taken(), "-");
}

}  // namespace
}  // namespace corvane::bench
