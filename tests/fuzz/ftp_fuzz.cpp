// What an FTP server says, through the real transfer library: a server on loopback, in this process and its one thread.

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ftp/FTPDownload.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/transfer/CurlAsyncReader.h"
#include "support/ScratchFolder.h"

namespace corvane::fuzz {
namespace {

constexpr int kPatience = 5;  // ms without a command; then the server says more

/// A listening socket on loopback whose one caller at a time is the runtime's.
class Listener {
public:
    Listener(LinuxRuntime& runtime, std::function<void(int)> take)
        : runtime_(runtime), socket_(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        const int on = 1;
        ::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        require(::bind(socket_, reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(socket_, 8) == 0 &&
                    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0,
                "there is a port to listen on");
        port_ = ntohs(address.sin_port);
        runtime_.watch(socket_, EPOLLIN, [this, take](std::uint32_t) {
            const int caller = ::accept4(socket_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (caller >= 0) take(caller);
        });
    }
    ~Listener() {
        runtime_.unwatch(socket_);
        ::close(socket_);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string port() const { return std::to_string(port_); }

private:
    LinuxRuntime& runtime_;
    int socket_;
    int port_ = 0;
};

/// Says the input's pieces (up to a "~"), one for each command and more when no command comes; at its end it hangs up.
/// It names its own data port whatever the piece says: nobody else's may be called.
class Server {
public:
    Server(LinuxRuntime& runtime, Input& input) : runtime_(runtime), input_(input) { listenOn(); }
    ~Server() {
        runtime_.stopTimer(timer_);
        hangUp(control_);
        hangUp(data_);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string address() const { return "127.0.0.1:" + control.port(); }

    std::string sentData;  ///< of the last file

private:
    void serve(int caller) {
        hangUp(control_);
        control_ = caller;
        runtime_.watch(caller, EPOLLIN, [this](std::uint32_t) { hear(); });
        say();
    }

    void hear() {
        char text[4096];
        const auto count = ::recv(control_, text, sizeof text, 0);
        if (count <= 0) return hangUp(control_);
        listenOn();
        const std::string command(text, static_cast<std::size_t>(count));
        if (command.compare(0, 4, "EPSV") == 0) {
            sayDataPort();
        } else if (command.compare(0, 4, "PASV") == 0) {
            write("502 no\r\n");
        } else if (command.compare(0, 4, "RETR") == 0 || command.compare(0, 4, "LIST") == 0) {
            say();
            sendData();
            say();
        } else {
            say();
        }
    }

    /// Starts to count anew how long no command has come.
    void listenOn() {
        if (timer_) runtime_.stopTimer(timer_);
        timer_ = runtime_.startTimer(kPatience, [this] { say(); });
    }

    void say() {
        if (control_ < 0) return;
        if (input_.isEmpty()) return hangUp(control_);
        write(std::string(input_.upTo('~')));
    }

    void sayDataPort() {
        std::string text;
        for (const char c : input_.upTo('~')) {
            text += c == '%' ? data.port() : std::string(1, c >= '0' && c <= '9' ? 'x' : c);
        }
        write("229 " + text);
    }

    void sendData() {
        sentData = input_.upTo('~');
        if (data_ < 0) return;
        ::send(data_, sentData.data(), sentData.size(), MSG_NOSIGNAL);
        ::shutdown(data_, SHUT_WR);
    }

    void write(const std::string& text) {
        if (control_ >= 0) ::send(control_, text.data(), text.size(), MSG_NOSIGNAL);
    }

    /// Without a linger that would keep the port for a minute.
    void hangUp(int& socket) {
        if (socket < 0) return;
        runtime_.unwatch(socket);
        const linger none{1, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        ::close(socket);
        socket = -1;
    }

    LinuxRuntime& runtime_;
    Input& input_;
    int timer_ = 0;
    int control_ = -1, data_ = -1;
    Listener control{runtime_, [this](int caller) { serve(caller); }};
    Listener data{runtime_, [this](int caller) {
                      hangUp(data_);
                      data_ = caller;
                  }};
};

}  // namespace

void ftp_server(std::string_view bytes) {
    Input input(bytes);
    const fakes::ScratchFolder folder;
    LinuxRuntime runtime;
    Server server(runtime, input);
    CurlAsyncReader reader(runtime, {200, 200});
    FTPDownload ftp(reader, runtime);
    reader.route({SiteRoute::Access::direct, {}});
    ftp.HostName(server.address());
    ftp.Username("upd");
    ftp.Password("pw");
    static_cast<void>(ftp.Connect());
    for (const char* name : {"one", "two"}) {
        server.sentData.clear();
        const bool isThere = ftp.GetFile("/firmware/" + std::string(name), folder.at(name));
        const auto content = fakes::ScratchFolder::content(folder.at(name));
        require(isThere == (content != "(none)"), "a file lies there when it was fetched, and only then");
        if (!isThere) continue;
        require(!content.empty() && server.sentData.compare(0, content.size(), content) == 0, "it holds what was sent");
    }
    require(folder.names().size() <= 2, "nothing but the files is left");
    ftp.Disconnect();
}

}  // namespace corvane::fuzz
