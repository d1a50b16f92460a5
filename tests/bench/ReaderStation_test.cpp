#include "bench/ReaderStation.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "support/ScratchFolder.h"

namespace corvane::bench {
namespace {

/// A program's connection to the socket, in the bench's own thread and loop. Packets are joined; "!" is the end.
class Client {
public:
    Client(Loop& loop, const std::string& path, const std::string& greeting)
        : loop_(loop), socket_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket") {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) got_ = "?";
        send(greeting);
        loop_.watch(socket_.get(), [this] { take(); });
    }
    ~Client() { loop_.unwatch(socket_.get()); }

    void send(const std::string& packet) const { ::send(socket_.get(), packet.data(), packet.size(), MSG_NOSIGNAL); }

    void sendReport(HidReportId id, const std::string& content) const {
        const auto report = hidReportOf({id, false, bytesOf(content)});
        send("R" + std::string(report.begin(), report.end()));
    }

    /// What has come by the time that nothing more comes for so many ms.
    std::string received(int ms = 30) {
        do {
            news_ = false;
            loop_.run(loop_.now() + ms * 1000LL);
        } while (news_);
        return std::exchange(got_, "");
    }

private:
    void take() {
        char packet[512];
        const auto count = ::recv(socket_.get(), packet, sizeof packet, 0);
        if (count < 0) return;
        news_ = true;
        if (count == 0) loop_.unwatch(socket_.get());
        const std::string text = count == 0 ? "!" : std::string(packet, static_cast<std::size_t>(count));
        const bool isReport = text.size() == 1 + kHidReportSize;
        got_ += isReport ? text.substr(0, 2) + text.substr(3, static_cast<unsigned char>(text[2])) : text;
    }

    Loop& loop_;
    Descriptor socket_;
    std::string got_;
    bool news_ = false;
};

/// One reader and what it needs.
struct Desk {
    explicit Desk(const std::string& spec) : station(loop, socket, deviceSpec(spec)) {}
    fakes::ScratchFolder folder;
    Loop loop;
    ReaderSocket socket{loop, folder.at("readers")};
    ReaderStation station;
};

constexpr char kListed[] = "bench:1\t1209\t0005\tCorvane\tKestrel\tK0001\n";

TEST(ReaderStation, IsListedAndCarriesBothChannels) {
    Desk desk("hid=yes,kind=boot,baud=57600,reader-version=K1");
    Client list(desk.loop, desk.socket.path(), "L");
    EXPECT_EQ(list.received(), kListed);
    Client program(desk.loop, desk.socket.path(), "Obench:1");
    EXPECT_EQ(program.received(), "Y");
    program.sendReport(HidReportId::control, std::string("\x04\x00", 2));
    EXPECT_EQ(program.received(), std::string("R\x02\x06\x03K1\x00", 7));
    program.sendReport(HidReportId::data, "\r");
    EXPECT_EQ(program.received(), "") << "the reader's rate is not the boot loader's yet";
    program.sendReport(HidReportId::control, std::string("\x01\x04\x00\x00\xE1\x00", 6));
    EXPECT_EQ(program.received(), std::string("R\x02\x06\x00", 4));
    program.sendReport(HidReportId::data, "\r");
    std::string said;
    for (const char c : program.received()) said += c == 'R' || c == '\x01' ? "" : std::string(1, c);
    EXPECT_EQ(said, "\r\nAV>") << "in one report or several";
    EXPECT_EQ(desk.station.remark(), "; its reader took 2 commands, rate 57600, direction 3");
    EXPECT_EQ(Client(desk.loop, desk.socket.path(), "Obench:2").received(), "Nthere is no such reader");
}

TEST(ReaderStation, GoesAndComesBack) {
    Desk desk("hid=yes,kind=boot,baud=19200,fault=unplug-erase,replug=20");
    Client list(desk.loop, desk.socket.path(), "L");
    Client program(desk.loop, desk.socket.path(), "Obench:1");
    program.received();
    list.received();
    program.sendReport(HidReportId::data, "\x02X\r");
    EXPECT_EQ(program.received(10), "!");
    EXPECT_EQ(desk.station.path(), "");
    EXPECT_EQ(list.received(), std::string("\n") + kListed);
    EXPECT_EQ(desk.station.path(), "bench:1");
    Client again(desk.loop, desk.socket.path(), "Obench:1");
    EXPECT_EQ(again.received(), "Y");
    again.sendReport(HidReportId::data, "\r");
    EXPECT_NE(again.received(), "");
}

TEST(ReaderStation, LosesWhatItSaysWhileNobodyHasItOpen) {
    Desk desk("hid=yes,kind=boot,fault=banner=4142");
    desk.loop.run(desk.loop.now() + 200000);
    Client program(desk.loop, desk.socket.path(), "Obench:1");
    EXPECT_EQ(program.received(), "Y");
}

}  // namespace
}  // namespace corvane::bench
