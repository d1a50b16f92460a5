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

std::optional<Descriptor> opened(const Pty& pty) {
    return std::optional<Descriptor>(std::in_place, open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK), "port");
}

TEST(Pty, IsAsNewForTheNextProgram) {
    Pty pty;
    auto port = opened(pty);
    ioctl(port->get(), TIOCEXCL);
    pty.write(Bytes{'o', 'l', 'd'});
    port.reset();
    pty.release();
    port = opened(pty);
    pty.discardUnread();
    int isExclusive = -1;
    ioctl(port->get(), TIOCGEXCL, &isExclusive);
    EXPECT_EQ(isExclusive, 0);
    pty.write(Bytes{'n', 'e', 'w'});
    pollfd readable{port->get(), POLLIN, 0};
    poll(&readable, 1, 10000);
    char buffer[8];
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(::read(port->get(), buffer, sizeof buffer))), "new");
}

TEST(OpenWatch, TellsWhoComesAndGoes) {
    Pty pty;
    OpenWatch watch;
    std::string told;
    watch.watch(pty.path(), [&](bool isHeld) { told += isHeld ? "+" : "-"; });
    const auto taken = [&] {
        watch.take();
        return std::exchange(told, "");
    };
    EXPECT_EQ(taken(), "") << "the bench itself does not count";
    auto first = opened(pty);
    EXPECT_EQ(taken(), "+");
    auto second = opened(pty);
    first.reset();
    EXPECT_EQ(taken(), "");
    second.reset();
    second = opened(pty);
    EXPECT_EQ(taken(), "-+");
}

}  // namespace
}  // namespace corvane::bench
