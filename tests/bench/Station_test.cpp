#include "bench/Station.h"

#include <gtest/gtest.h>

#include "Host.h"

namespace corvane::bench {
namespace {

/// One station and what it needs.
struct Desk {
    explicit Desk(const std::string& spec) : station(loop, watch, deviceSpec(spec), [this] { ++changes; }) {
        loop.watch(watch.descriptor(), [this] { watch.take(); });
    }
    int changes = 0;
    Loop loop;
    OpenWatch watch;
    Station station;
};

std::string prompt() { return "\r\nAVR>"; }

TEST(Station, HearsTheHostsRateWhateverItIs) {
    for (const auto* rate : {"1500", "57600", "128000", "921600"}) {
        Desk desk(std::string("kind=boot,baud=") + rate);
        Host host(desk.loop, desk.station.path());
        host.setRate(static_cast<std::uint32_t>(std::stoul(rate)));
        EXPECT_EQ(host.ask("\r", 6), prompt()) << rate;
    }
}

TEST(Station, IsSilentAtAnotherRateAndNeverEchoes) {
    Desk desk("kind=boot,baud=19200");
    Host host(desk.loop, desk.station.path());
    EXPECT_EQ(host.settings().c_lflag & (ECHO | ICANON | ISIG), 0U);
    EXPECT_EQ(host.settings().c_iflag & (ICRNL | IXON | ISTRIP), 0U);
    host.setRate(38400);
    EXPECT_EQ(host.ask("\r", 1, 30), "");
    host.setRate(19200);
    EXPECT_EQ(host.ask("\r", 6), prompt());
    EXPECT_EQ(desk.station.device().log().heard.at(38400), Bytes{0x0D});
}

TEST(Station, ProgramsADeviceAtWireSpeed) {
    Desk desk("kind=boot,baud=115200");
    Host host(desk.loop, desk.station.path());
    host.setRate(115200);
    const Micros start = desk.loop.now();
    EXPECT_EQ(host.ask("\x02X\r", 1), "\x06");
    for (int i = 0; i < 20; ++i) EXPECT_EQ(host.ask(":100000000102030405060708090A0B0C0D0E0F1068\r", 1), "\x06");
    const auto& transcript = desk.station.line().transcript();
    EXPECT_EQ(transcript.wireTime(), 78472) << "904 bytes";
    EXPECT_GE(desk.loop.now() - start, transcript.wireTime()) << "no wire is faster than itself";
    EXPECT_EQ(desk.station.device().flash().at(15), 0x10);
}

TEST(Station, GoesAndComesBack) {
    Desk desk("kind=boot,baud=9600,fault=unplug-erase,replug=20");
    const std::string path = desk.station.path();
    Host host(desk.loop, path);
    EXPECT_EQ(host.ask("\x02X\r", 1), "");
    EXPECT_TRUE(host.isGone());
    EXPECT_EQ(desk.station.path(), "");
    EXPECT_EQ(desk.changes, 1);
    host.ask("", 1, 200);
    EXPECT_EQ(desk.changes, 2);
    ASSERT_NE(desk.station.path(), "");
    Host again(desk.loop, desk.station.path());
    EXPECT_EQ(again.ask("\r", 6), prompt());
}

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
