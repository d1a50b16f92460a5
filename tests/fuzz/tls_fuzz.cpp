// What a server says in a dialogue that is to be encrypted, on its own connection and on those of its data.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <map>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/transfer/CurlAsyncReader.h"
#include "support/ScratchFolder.h"

namespace corvane::fuzz {
namespace {

constexpr char kIdentity[] = CORVANE_TEST_SUPPORT "/loopback.pem";  // of 127.0.0.1, for a hundred years

SSL_CTX* serverContext() {
    std::signal(SIGPIPE, SIG_IGN);  // which this library knows no way around
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    require(SSL_CTX_use_certificate_file(context, kIdentity, SSL_FILETYPE_PEM) == 1 &&
                SSL_CTX_use_PrivateKey_file(context, kIdentity, SSL_FILETYPE_PEM) == 1,
            "there is an identity");
    return context;
}

int listeningSocket(int& port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    require(::bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(socket, 8) == 0, "a port");
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    return socket;
}

/// Says the next piece of its input, up to "~", to whoever connects and after each line that it hears; "@" stands for
/// the port of the data. Behind "234" it encrypts, unless it is to fail there. Hangs up when it has nothing left to
/// say.
class Server {
public:
    Server(Input input, SSL_CTX* context, int faults) : input_(input), context_(context), faults_(faults) {
        for (const bool isData : {false, true}) {
            const int listener = listeningSocket(isData ? dataPort : port);
            listeners_.push_back(listener);
            runtime_.watch(listener, EPOLLIN, [this, listener, isData](std::uint32_t) {
                const int socket = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
                if (socket >= 0) take(socket, isData);
            });
        }
        thread_ = std::thread([this] {
            while (!isOver_) runtime_.WaitActivity(5);
        });
    }
    ~Server() {
        isOver_ = true;
        thread_.join();
        while (!lines_.empty()) hangUp(lines_.begin()->first);
        for (const int listener : listeners_) {
            runtime_.unwatch(listener);
            ::close(listener);
        }
    }

    int port = 0, dataPort = 0;
    std::atomic<bool> hasHeardAccount = false;  ///< without encryption

private:
    enum Fault { kBare = 1, kBareData = 2 };  // says what it says as it is, where encryption was agreed

    struct Line {
        bool isData = false;
        SSL* tls = nullptr;
    };

    void take(int socket, bool isData) {
        lines_[socket].isData = isData;
        runtime_.watch(socket, EPOLLIN, [this, socket](std::uint32_t) { hear(socket); });
        if (isData && isEncrypted_ && !(faults_ & kBareData)) return encrypt(socket);
        if (!isData) isEncrypted_ = false;
        isData ? hear(socket) : say(socket);
    }

    void encrypt(int socket) {
        lines_[socket].tls = SSL_new(context_);
        SSL_set_fd(lines_[socket].tls, socket);
        SSL_set_accept_state(lines_[socket].tls);
    }

    void hear(int socket) {
        const auto [isData, tls] = lines_[socket];
        if (isData && (!tls || SSL_do_handshake(tls) == 1)) {
            say(socket);
            return hangUp(socket);
        }
        char heard[4096];
        const auto length = tls ? SSL_read(tls, heard, sizeof heard) : ::recv(socket, heard, sizeof heard, 0);
        const bool isPending =
            tls ? SSL_get_error(tls, static_cast<int>(length)) == SSL_ERROR_WANT_READ : errno == EAGAIN;
        if (length <= 0) return isPending ? void() : hangUp(socket);
        const std::string_view commands(heard, static_cast<std::size_t>(length));
        if (!tls && commands.find("pw") != std::string_view::npos) hasHeardAccount = true;
        for (const char c : commands) {
            if (c == '\n' && lines_.count(socket)) say(socket);
        }
    }

    void say(int socket) {
        if (input_.isEmpty()) return hangUp(socket);
        std::string words(input_.upTo('~'));
        if (const auto at = words.find('@'); at != std::string::npos) words.replace(at, 1, std::to_string(dataPort));
        const auto size = words.size();
        SSL* tls = lines_[socket].tls;
        if (size > 0)
            tls ? SSL_write(tls, words.data(), static_cast<int>(size))
                : ::send(socket, words.data(), size, MSG_NOSIGNAL);
        if (tls || lines_[socket].isData || words.compare(0, 3, "234") != 0) return;
        isEncrypted_ = true;
        if (!(faults_ & kBare)) encrypt(socket);
    }

    void hangUp(int socket) {
        runtime_.unwatch(socket);
        SSL_free(lines_[socket].tls);
        lines_.erase(socket);
        ::close(socket);
    }

    LinuxRuntime runtime_;
    Input input_;
    SSL_CTX* context_;
    int faults_;
    bool isEncrypted_ = false;
    std::vector<int> listeners_;
    std::map<int, Line> lines_;  // by their sockets
    std::atomic<bool> isOver_ = false;
    std::thread thread_;  // its own: a client waits for the handshake
};

}  // namespace

/// The first byte says what is asked for, and where the server fails to encrypt. Every read ends; and where encryption
/// is required nobody hears the password in the clear.
void tls_dialogue(std::string_view bytes) {
    static SSL_CTX* const kContext = serverContext();
    constexpr std::int64_t kMost = 1000;
    Input input(bytes);
    const int choice = input.byte();
    const bool isRequired = choice & 4;
    LinuxRuntime runtime;
    Server server(input, kContext, choice & 3);
    CurlAsyncReader reader(runtime, {60, 60, 150, 40});
    reader.route({.encryption = isRequired ? SiteRoute::Encryption::required : SiteRoute::Encryption::whenOffered,
                  .authorities = choice & 8 ? "" : kIdentity});
    reader.mostBytes(kMost);
    const fakes::ScratchFolder folder;
    for (const char* path : {"", "big"}) {
        const Address address{"u", "pw", "127.0.0.1", static_cast<std::uint16_t>(server.port), path};
        bool isOver = false;
        std::int64_t read = 0;
        reader.onComplete = [&](const AsyncResult& result) { isOver = true, read = result.bytesRead; };
        reader.start(address, folder.at("read"));
        const auto begun = runtime.tick();
        while (!isOver && runtime.tick() - begun < 5000) {
            runtime.WaitActivity(20);
            runtime.DoEvents();
        }
        require(isOver, "a read ends");
        require(read <= kMost, "no more comes than may");
        require(!isRequired || !server.hasHeardAccount, "the password is not sent in the clear");
        std::fprintf(stderr, "%s: %s read %d\n", path, reader.failure().words.c_str(), (int)read);
        if (reader.failure()) return;
    }
}

}  // namespace corvane::fuzz
