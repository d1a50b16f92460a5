// What an FTP server says, through the real transfer library: a server on loopback, in this process and its one thread.

#include <arpa/inet.h>
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

/// Says the input's pieces (up to a "~"), one for each command and more when no command comes; at its end it hangs up.
/// It names its own port for data whatever the piece says: nobody else's may be called.
class Server {
public:
    Server(LinuxRuntime& runtime, Input& input) : runtime_(runtime), input_(input) {
        sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        auto* any = reinterpret_cast<sockaddr*>(&address);
        socklen_t size = sizeof address;
        require(::bind(listener_, any, size) == 0 && ::listen(listener_, 8) == 0 &&
                    ::getsockname(listener_, any, &size) == 0,
                "there is a port to listen on");
        port_ = std::to_string(ntohs(address.sin_port));
        runtime_.watch(listener_, EPOLLIN, [this](std::uint32_t) { serve(); });
        timer_ = runtime_.startTimer(5, [this] {
            if (!std::exchange(hasHeard_, false)) say();
        });
    }
    ~Server() {
        runtime_.stopTimer(timer_);
        for (auto* socket : {&control_, &data_, &listener_}) hangUp(*socket);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string address() const { return "127.0.0.1:" + port_; }

    std::string sentData;  ///< of the last file

private:
    void serve() {
        const int caller = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        auto& socket = std::exchange(awaitsData_, false) ? data_ : control_;
        hangUp(socket);
        socket = caller;
        if (&socket == &data_) return;
        runtime_.watch(caller, EPOLLIN, [this](std::uint32_t) { hear(); });
        say();
    }

    void hear() {
        char text[4096];
        const auto count = ::recv(control_, text, sizeof text, 0);
        if (count <= 0) return hangUp(control_);
        hasHeard_ = true;
        const auto command = std::string(text, static_cast<std::size_t>(count)).substr(0, 4);
        if (command == "EPSV") return sayDataPort();
        if (command == "PASV") return write("502 no\r\n");
        say();
        if (command != "RETR" && command != "LIST") return;
        sentData = input_.upTo('~');
        ::send(data_, sentData.data(), sentData.size(), MSG_NOSIGNAL);
        ::shutdown(data_, SHUT_WR);
        say();
    }

    void say() {
        if (control_ < 0) return;
        if (input_.isEmpty()) return hangUp(control_);
        write(std::string(input_.upTo('~')));
    }

    void sayDataPort() {
        std::string text;
        for (const char c : input_.upTo('~')) {
            text += c == '%' ? port_ : std::string(1, c >= '0' && c <= '9' ? 'x' : c);
        }
        awaitsData_ = text.find(port_) != std::string::npos;
        write("229 " + text);
    }

    void write(const std::string& text) const { ::send(control_, text.data(), text.size(), MSG_NOSIGNAL); }

    /// Without a linger that would keep the port for a minute.
    void hangUp(int& socket) {
        if (socket < 0) return;
        runtime_.unwatch(socket);
        const linger none{1, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        ::close(std::exchange(socket, -1));
    }

    LinuxRuntime& runtime_;
    Input& input_;
    int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    int control_ = -1, data_ = -1, timer_ = 0;
    bool awaitsData_ = false, hasHeard_ = false;
    std::string port_;
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
