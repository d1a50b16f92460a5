#include "platform/linux/CurlSession.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <poll.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace corvane {
namespace {

constexpr long kReceiveBuffer = 512 * 1024;  // what one event moves at most
constexpr long kLongestIdle = 24 * 3600;     // seconds; when a session ends is decided elsewhere
constexpr char kGoodbye[] = "QUIT\r\n";

bool isReadable(int socket) {
    pollfd entry{socket, POLLIN, 0};
    return ::poll(&entry, 1, 0) > 0;
}

CurlSession& session(void* self) { return *static_cast<CurlSession*>(self); }

}  // namespace

CurlSession::CurlSession(LinuxRuntime& runtime, const FtpAddress& address)
    : runtime_(runtime),
      address_(address),
      multi_(curl_multi_init()),
      easy_(curl_easy_init()),
      timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

// What the first constructor has made is cleaned up when this one throws.
CurlSession::CurlSession(LinuxRuntime& runtime, const FtpAddress& address, const SiteRoute& route, int connectLimitMs)
    : CurlSession(runtime, address) {
    if (timer_ < 0 || !multi_ || !easy_) throw std::runtime_error("The transfer library cannot be started");
    runtime_.watch(timer_, EPOLLIN, [this](std::uint32_t) { onTimer(); });
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &onSocketChange);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &onTimeChange);
    curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_CLOSESOCKETFUNCTION, &onClose);
    set(CURLOPT_CLOSESOCKETDATA, this);
    set(CURLOPT_ERRORBUFFER, error_.data());
    set(CURLOPT_PROTOCOLS_STR, "ftp");
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_FTP_FILEMETHOD, long{CURLFTPMETHOD_NOCWD});  // the path goes out as it is, in one command
    set(CURLOPT_FAILONERROR, 1L);
    set(CURLOPT_BUFFERSIZE, kReceiveBuffer);
    set(CURLOPT_CONNECTTIMEOUT_MS, long{connectLimitMs});
    set(CURLOPT_MAXAGE_CONN, kLongestIdle);
    set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still being looked up holds nobody up
    set(CURLOPT_NOSIGNAL, 1L);
    if (!address.user.empty()) {
        set(CURLOPT_USERNAME, address.user.c_str());
        set(CURLOPT_PASSWORD, address.password.c_str());
    }
    applyRoute(route);
}

CurlSession::~CurlSession() {
    sayGoodbye();
    if (multi_ && easy_) curl_multi_remove_handle(multi_, easy_);
    curl_easy_cleanup(easy_);
    if (multi_) curl_multi_cleanup(multi_);
    if (timer_ >= 0) {
        runtime_.unwatch(timer_);
        ::close(timer_);
    }
}

template <class Value>
void CurlSession::set(CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(easy_, option, value);
    if (code != CURLE_OK) throw std::runtime_error(curl_easy_strerror(code));
}

void CurlSession::applyRoute(const SiteRoute& route) {
    if (route.access == SiteRoute::Access::byDefault) return;
    const bool isDirect = route.access == SiteRoute::Access::direct;
    set(CURLOPT_PROXY, isDirect ? "" : route.proxy.c_str());
    set(CURLOPT_NOPROXY, "");  // the operator's choice counts whatever the environment excepts
}

void CurlSession::begin(const FtpAddress& address) {
    curl_multi_remove_handle(multi_, easy_);
    ownProblem_.clear();
    error_.fill(0);
    set(CURLOPT_URL, address.url().c_str());
    const CURLMcode code = curl_multi_add_handle(multi_, easy_);
    if (code != CURLM_OK) throw std::runtime_error(curl_multi_strerror(code));
}

bool CurlSession::isFor(const FtpAddress& address) const {
    return address.host == address_.host && address.user == address_.user && address.password == address_.password;
}

bool CurlSession::isOpen() const {
    const int socket = controlSocket();
    return socket >= 0 && !isReadable(socket);  // an idle server that speaks takes its leave
}

std::int64_t CurlSession::size() const {
    curl_off_t size = -1;
    curl_easy_getinfo(easy_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    return std::max<curl_off_t>(size, 0);
}

int CurlSession::onSocketChange(CURL*, curl_socket_t socket, int what, void* self, void*) {
    auto& that = session(self);
    try {
        if (what == CURL_POLL_REMOVE) {
            that.runtime_.unwatch(socket);
            return 0;
        }
        const std::uint32_t events = (what & CURL_POLL_IN ? EPOLLIN : 0U) | (what & CURL_POLL_OUT ? EPOLLOUT : 0U);
        that.runtime_.watch(socket, events,
                            [&that, socket](std::uint32_t happened) { that.onSocket(socket, happened); });
        return 0;
    } catch (const std::exception& error) {
        that.ownProblem_ = error.what();
        return -1;
    }
}

int CurlSession::onTimeChange(CURLM*, long ms, void* self) {
    itimerspec setting{};
    if (ms == 0) setting.it_value.tv_nsec = 1;  // zero would mean never
    if (ms > 0) setting.it_value = {ms / 1000, ms % 1000 * 1000000};
    return ::timerfd_settime(session(self).timer_, 0, &setting, nullptr);
}

std::size_t CurlSession::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    try {
        session(self).onData({bytes, size * count});
        return size * count;
    } catch (const std::exception& error) {
        session(self).ownProblem_ = error.what();
        return 0;
    }
}

std::size_t CurlSession::onHeader(char*, std::size_t size, std::size_t count, void* self) {
    session(self).onReply();
    return size * count;
}

int CurlSession::onClose(void* self, curl_socket_t socket) {
    session(self).runtime_.unwatch(socket);
    return ::close(socket);
}

void CurlSession::onSocket(int socket, std::uint32_t events) {
    if (isReplyMissing(socket)) {
        waitForReply(socket);
        return;
    }
    int happened = 0;
    if (events & EPOLLIN) happened |= CURL_CSELECT_IN;
    if (events & EPOLLOUT) happened |= CURL_CSELECT_OUT;
    if (events & (EPOLLERR | EPOLLHUP)) happened |= CURL_CSELECT_ERR;
    act(socket, happened);
}

/// At the end of the data the library would wait for the server's last word and let nothing else happen meanwhile, up
/// to a minute. So it is not told of the end before that word is there.
bool CurlSession::isReplyMissing(int socket) const {
    const int control = controlSocket();
    char next = 0;
    return control >= 0 && socket != control && ::recv(socket, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0 &&
           !isReadable(control);
}

void CurlSession::waitForReply(int socket) {
    const int control = controlSocket();
    isReplyAwaited_ = true;
    runtime_.unwatch(socket);
    runtime_.watch(control, EPOLLIN, [this, socket, control](std::uint32_t) {
        isReplyAwaited_ = false;
        runtime_.unwatch(control);
        act(socket, CURL_CSELECT_IN);
        act(CURL_SOCKET_TIMEOUT, 0);
    });
}

void CurlSession::onTimer() {
    std::uint64_t expirations = 0;
    if (::read(timer_, &expirations, sizeof expirations) < 0) return;
    if (!isReplyAwaited_) act(CURL_SOCKET_TIMEOUT, 0);
}

void CurlSession::act(int socket, int events) {
    int running = 0;
    curl_multi_socket_action(multi_, socket, events, &running);
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
        if (message->msg == CURLMSG_DONE) onDone(problemOf(message->data.result));
    }
}

std::string CurlSession::problemOf(CURLcode code) const {
    if (!ownProblem_.empty()) return ownProblem_;
    if (code != CURLE_OK) return error_[0] ? error_.data() : curl_easy_strerror(code);
    long answer = 0;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &answer);
    // A proxy that sends its user elsewhere has not sent the file.
    if (isOverHttp() && answer != 200) return "The proxy's answer was " + std::to_string(answer);
    return {};
}

bool CurlSession::isOverHttp() const {
    const char* scheme = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_SCHEME, &scheme);
    return scheme && std::string_view(scheme).substr(0, 4) == "HTTP";
}

/// The socket of the FTP dialogue, or the one to the proxy; -1 when there is none.
int CurlSession::controlSocket() const {
    curl_socket_t socket = CURL_SOCKET_BAD;
    curl_easy_getinfo(easy_, CURLINFO_ACTIVESOCKET, &socket);
    return socket == CURL_SOCKET_BAD ? -1 : socket;
}

/// The library's own farewell waits for the answer of a server that may have fallen silent; on a socket that is shut
/// down it gives up at once.
void CurlSession::sayGoodbye() {
    const int control = easy_ ? controlSocket() : -1;
    if (control < 0) return;
    std::array<char, 4096> unread{};  // left lying it would turn the farewell into a reset
    while (::recv(control, unread.data(), unread.size(), MSG_DONTWAIT) > 0) continue;
    if (!isOverHttp()) ::send(control, kGoodbye, sizeof kGoodbye - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    ::shutdown(control, SHUT_RDWR);
}

}  // namespace corvane
