#include "platform/linux/transfer/CurlSession.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <exception>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

#include "platform/linux/transfer/CurlFailure.h"
#include "platform/linux/transfer/SocketState.h"

namespace corvane {
namespace {

constexpr long kReceiveBuffer = 256 * 1024L;
// ms; then other events have theirs. A pause makes the library copy what it has just read.
constexpr std::uint32_t kLongestTurn = 10;
constexpr long kLongestIdle = 24 * 3600L;               // seconds; when a session ends is decided elsewhere
constexpr std::uint32_t kLongestBlock = 500;            // ms that the library may wait by itself
constexpr std::uint32_t kLongestEncryptedBlock = 3000;  // ... for a last word that only it can read
constexpr std::uint32_t kGreetingPause = 500;           // ms that a greeting may take before the library looks again
constexpr int kMostUnread = 16;                         // pieces of a talkative server's words
constexpr char kGoodbye[] = "QUIT\r\n";

/// The number at the front of a text; 0 when none stands there.
std::int64_t numberAt(std::string_view text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::max<std::int64_t>(number, 0);
}

CurlSession& session(void* self) { return *static_cast<CurlSession*>(self); }

}  // namespace

std::string curlUrl(const Address& address) {
    const std::string_view path = address.path;
    const auto root = "ftp://" + address.server() + "/";
    return path.empty() ? root : root + "%2F" + escapedPath(path.substr(path.front() == '/' ? 1 : 0));
}

CurlSession::CurlSession(LinuxRuntime& runtime, const Address& address)
    : runtime_(runtime),
      address_(address),
      multi_(curl_multi_init()),
      easy_(curl_easy_init()),
      timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

// The constructor above has finished when this one throws, so the destructor cleans up.
CurlSession::CurlSession(LinuxRuntime& runtime, const Address& address, const SiteRoute& route, Tls tls, Limits limits)
    : CurlSession(runtime, address) {
    tls_ = tls;
    limits_ = limits;
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
    set(CURLOPT_PREREQFUNCTION, &onConnected);
    set(CURLOPT_PREREQDATA, this);
    set(CURLOPT_OPENSOCKETFUNCTION, &onOpen);
    set(CURLOPT_OPENSOCKETDATA, this);
    set(CURLOPT_CLOSESOCKETFUNCTION, &onClose);
    set(CURLOPT_CLOSESOCKETDATA, this);
    set(CURLOPT_XFERINFOFUNCTION, &onProgress);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_ERRORBUFFER, error_.data());
    set(CURLOPT_PROTOCOLS_STR, "ftp");
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_FTP_FILEMETHOD, long{CURLFTPMETHOD_NOCWD});  // the path goes out as it is, in one command
    set(CURLOPT_FAILONERROR, 1L);
    set(CURLOPT_BUFFERSIZE, kReceiveBuffer);
    set(CURLOPT_MAXAGE_CONN, kLongestIdle);
    set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still being looked up holds nobody up
    set(CURLOPT_NOSIGNAL, 1L);
    if (!address.user.empty()) {
        set(CURLOPT_USERNAME, address.user.c_str());
        set(CURLOPT_PASSWORD, address.password.c_str());
    }
    applyRoute(route);
    applyTls(route);
}

CurlSession::~CurlSession() {
    sayGoodbye();
    if (multi_ && easy_) curl_multi_remove_handle(multi_, easy_);
    curl_easy_cleanup(easy_);
    if (multi_) curl_multi_cleanup(multi_);
    curl_slist_free_all(question_);
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
    // A proxy that was chosen but not named leaves the environment's in force.
    if (route.access == SiteRoute::Access::byDefault) return;
    if (route.access == SiteRoute::Access::proxy && route.proxy.empty()) return;
    const bool isDirect = route.access == SiteRoute::Access::direct;
    set(CURLOPT_PROXY, isDirect ? "" : route.proxy.c_str());
    set(CURLOPT_NOPROXY, "");  // the operator's choice counts whatever the environment excepts
}

void CurlSession::applyTls(const SiteRoute& route) {
    if (tls_ == Tls::none) return;
    set(CURLOPT_USE_SSL, long{tls_ == Tls::required ? CURLUSESSL_ALL : CURLUSESSL_TRY});
    set(CURLOPT_FTPSSLAUTH, long{CURLFTPAUTH_TLS});
    set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    set(CURLOPT_SSL_VERIFYPEER, long{tls_ != Tls::unverified});
    set(CURLOPT_SSL_VERIFYHOST, tls_ == Tls::unverified ? 0L : 2L);
    set(CURLOPT_DEBUGFUNCTION, &onDebug);
    set(CURLOPT_DEBUGDATA, this);
    set(CURLOPT_VERBOSE, 1L);
    if (!route.authorities.empty()) set(CURLOPT_CAINFO, route.authorities.c_str());
}

void CurlSession::begin(const Address& address) {
    curl_multi_remove_handle(multi_, easy_);
    received_ = announced_ = 0;
    isReplyAwaited_ = isTurnOver_ = hasReplied_ = isDataHeld_ = isDataOver_ = false;
    ownFailure_ = {};
    begun_ = runtime_.tick();
    error_.fill(0);
    limitConnect(false);
    set(CURLOPT_URL, curlUrl(address).c_str());
    askForSize(address);
    const CURLMcode code = curl_multi_add_handle(multi_, easy_);
    if (code != CURLM_OK) throw std::runtime_error(curl_multi_strerror(code));
}

/// The library would ask by itself, stop reading at the size that it is told and take what it has for the whole. So it
/// is told to ask without heeding the answer, which is compared here with what comes.
void CurlSession::askForSize(const Address& address) {
    curl_slist_free_all(std::exchange(question_, nullptr));
    if (!address.isFolder()) {
        const auto question = "*SIZE " + std::string(address.path[0] == '/' ? "" : "/") + address.path;
        // Where the data is encrypted, a server may wait for the request of the file before it goes on with the data's
        // connection, and the library for that connection before it says anything else.
        if (tls_ != Tls::none) question_ = curl_slist_append(nullptr, "*TYPE I");
        question_ = curl_slist_append(question_, question.c_str());
    }
    set(tls_ == Tls::none ? CURLOPT_PREQUOTE : CURLOPT_QUOTE, question_);
    set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
}

/// A proxy keeps its connection: only the length that it names ends what it sends.
int CurlSession::onConnected(void* self, char*, char*, int, int) {
    auto& that = session(self);
    if (!that.isOverHttp()) return CURL_PREREQFUNC_OK;
    that.set(CURLOPT_IGNORE_CONTENT_LENGTH, 0L);
    if (that.tls_ != Tls::required) return CURL_PREREQFUNC_OK;
    that.ownFailure_ = {ReadFailure::Kind::notEncrypted, "the proxy in between would get everything as it is"};
    return CURL_PREREQFUNC_ABORT;
}

bool CurlSession::isFor(const Address& address) const {
    return address.server() == address_.server() && address.user == address_.user &&
           address.password == address_.password;
}

bool CurlSession::isOpen() const {
    const int socket = controlSocket();
    if (isEncrypted_) return socket >= 0 && !isHungUp(socket);  // what else there is may be the encryption's own
    return socket >= 0 && !isReadable(socket);  // a server that speaks unasked says that it ends the session
}

std::int64_t CurlSession::size() const {
    if (!isOverHttp()) return announced_;
    curl_off_t size = -1;
    curl_easy_getinfo(easy_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    return std::max<curl_off_t>(size, 0);
}

int CurlSession::onSocketChange(CURL*, curl_socket_t socket, int what, void* self, void*) {
    auto& that = session(self);
    if (socket == that.controlSocket()) that.isHeard_ = what != CURL_POLL_REMOVE;
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
        that.ownFailure_ = {ReadFailure::Kind::brokenOff, error.what()};
        return -1;
    }
}

int CurlSession::onTimeChange(CURLM*, long ms, void* self) {
    auto& that = session(self);
    that.isPatient_ = ms > 1;
    that.setTimer(ms);
    return 0;
}

std::size_t CurlSession::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& that = session(self);
    const std::string_view body(bytes, size * count);
    const auto announced = that.size();
    if (announced > 0 && that.received_ + static_cast<std::int64_t>(body.size()) > announced) {
        that.ownFailure_ = {ReadFailure::Kind::brokenOff,
                            "the server sends more than the " + std::to_string(announced) + " bytes that it announced"};
        return 0;
    }
    try {
        if (that.isReplyMissing(body.size())) {
            that.isReplyAwaited_ = true;
            return CURL_WRITEFUNC_PAUSE;
        }
        if (that.runtime_.tick() - that.turn_ >= kLongestTurn) {
            that.isTurnOver_ = true;
            return CURL_WRITEFUNC_PAUSE;
        }
        that.onData(body);
        that.received_ += static_cast<std::int64_t>(body.size());
        return body.size();
    } catch (const std::exception& error) {
        that.ownFailure_ = {ReadFailure::Kind::storage, error.what()};
        return 0;
    }
}

std::size_t CurlSession::onHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& that = session(self);
    that.hasReplied_ = true;
    that.lastCall_ = that.runtime_.tick();
    that.replied_ += size * count;
    that.takeReply({bytes, size * count});
    that.onReply();
    return size * count;
}

/// The answer to the question for the size, or what some servers say of it when the file begins to come.
void CurlSession::takeReply(std::string_view line) {
    const auto code = line.substr(0, 4);
    replies_ += code.size() == 4 && code[0] >= '1' && code[0] <= '5' && code[3] == ' ';
    isEncrypted_ = isEncrypted_ || (replies_ == 2 && code == "234 ");
    limitOffer();
    if (code == "213 ") announced_ = numberAt(line.substr(code.size()));
    if (code == "150 " || code == "125 ") {
        releaseData();
        if (isEncrypted_) limitConnect(true);
    }
    const auto place = line.rfind('(');
    const bool namesSize = place != std::string_view::npos && line.find(" bytes)", place) != std::string_view::npos;
    if (announced_ == 0 && question_ && namesSize && (code == "150 " || code == "125 "))
        announced_ = numberAt(line.substr(place + 1));
}

curl_socket_t CurlSession::onOpen(void* self, curlsocktype, curl_sockaddr* address) {
    const int socket = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    if (socket < 0) return CURL_SOCKET_BAD;
    auto& that = session(self);
    if (that.sockets_.empty()) {
        that.replied_ = 0;
        that.replies_ = 0;
        that.isEncrypted_ = false;
    }
    if (!that.sockets_.empty() && that.isEncrypted_) that.holdData(socket);
    that.sockets_.push_back(socket);
    return socket;
}

int CurlSession::onDebug(CURL*, curl_infotype kind, char* text, std::size_t size, void* self) {
    const auto command = std::string_view(text, size).substr(0, 4);
    if (kind == CURLINFO_HEADER_OUT) session(self).isFileAsked_ = command == "RETR" || command == "LIST";
    return 0;
}

/// From the greeting on, until something has come of the offer of encryption.
void CurlSession::limitOffer() {
    if (tls_ == Tls::none || replies_ == 0 || replies_ > 3) return;
    limitConnect(isTlsDue());
}

/// The library counts from the begin of the read.
void CurlSession::limitConnect(bool isOfferDue) {
    const auto untilOffer = static_cast<long>(runtime_.tick() - begun_) + limits_.offer;
    set(CURLOPT_CONNECTTIMEOUT_MS, isOfferDue ? std::min(untilOffer, long{limits_.connect}) : long{limits_.connect});
}

/// Some servers close a data connection on which they hear anything before the file was asked for, and the library
/// greets as soon as it is connected. So the system keeps that back until the server has said that the file comes, or
/// for the 0.2 s that it keeps anything back.
void CurlSession::holdData(int socket) {
    const int isHeld = 1;
    isDataHeld_ = ::setsockopt(socket, IPPROTO_TCP, TCP_CORK, &isHeld, sizeof isHeld) == 0;
    isFileAsked_ = false;
}

void CurlSession::releaseData() {
    const int isHeld = 0;
    if (std::exchange(isDataHeld_, false) && dataSocket() >= 0)
        static_cast<void>(::setsockopt(dataSocket(), IPPROTO_TCP, TCP_CORK, &isHeld, sizeof isHeld));
}

/// While it greets on the data connection the library does not listen to the server. The answer to the request of the
/// file lets the greeting go; any other one is the library's.
void CurlSession::awaitStart() {
    const int control = controlSocket();
    runtime_.watch(control, EPOLLIN, [this, control](std::uint32_t) {
        runtime_.unwatch(control);
        if (!isFileAsked_) return act(dataSocket(), 0);
        releaseData();
        released_ = runtime_.tick();
    });
}

/// Would the library hear that the file comes, it would wait by itself until its greeting is answered. So it is only to
/// look when there is no answer: what it hears may be that the file does not come.
long CurlSession::greetingPause() const {
    if (!isFileAsked_ || isHeard_ || !isPatient_ || received_ > 0) return 0;
    const auto passed = runtime_.tick() - released_;
    return passed < kGreetingPause ? static_cast<long>(kGreetingPause - passed) : 0;
}

int CurlSession::onClose(void* self, curl_socket_t socket) {
    auto& that = session(self);
    that.isDataOver_ = socket == that.dataSocket();
    that.isDataHeld_ = that.isDataHeld_ && !that.isDataOver_;
    that.lastCall_ = that.runtime_.tick();
    std::erase(that.sockets_, socket);
    that.runtime_.unwatch(socket);
    return ::close(socket);
}

/// When a server has said something that is no last word, the library waits for that word all the same, up to a minute,
/// in which nothing else happens. Once a second it asks here.
int CurlSession::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    auto& that = session(self);
    const auto longest = that.isEncrypted_ ? kLongestEncryptedBlock : kLongestBlock;
    if (!that.isDataOver_ || that.runtime_.tick() - that.lastCall_ < longest) return 0;
    that.ownFailure_ = {ReadFailure::Kind::brokenOff, "the server did not confirm the transfer"};
    return 1;
}

void CurlSession::onSocket(int socket, std::uint32_t events) {
    if ((events & EPOLLIN) && socket == dataSocket() && isReplyMissing(0)) {
        runtime_.unwatch(socket);
        isReplyAwaited_ = true;
        awaitReply();
        return;
    }
    int happened = 0;
    if (events & EPOLLIN) happened |= CURL_CSELECT_IN;
    if (events & EPOLLOUT) happened |= CURL_CSELECT_OUT;
    if (events & (EPOLLERR | EPOLLHUP)) happened |= CURL_CSELECT_ERR;
    act(socket, happened);
}

/// In ms from now; below 0 for never.
void CurlSession::setTimer(long ms) {
    itimerspec setting{};
    if (ms == 0) setting.it_value.tv_nsec = 1;  // zero would mean never
    if (ms > 0) setting.it_value = {ms / 1000, ms % 1000 * 1000000};
    ::timerfd_settime(timer_, 0, &setting, nullptr);
}

void CurlSession::onTimer() {
    std::uint64_t expirations = 0;
    if (::read(timer_, &expirations, sizeof expirations) < 0 || isReplyAwaited_) return;
    if (const auto pause = greetingPause(); pause > 0) return setTimer(pause);
    if (std::exchange(isTurnOver_, false)) goOn();
    act(CURL_SOCKET_TIMEOUT, 0);
}

void CurlSession::goOn() {
    turn_ = runtime_.tick();
    curl_easy_pause(easy_, CURLPAUSE_CONT);
}

void CurlSession::act(int socket, int events) {
    int running = 0;
    turn_ = lastCall_ = runtime_.tick();
    curl_multi_socket_action(multi_, socket, events, &running);
    if (std::exchange(hasReplied_, false) && dataSocket() < 0 && !isOverHttp()) nudge();
    const bool isWhole = dataSocket() >= 0;  // else there may be no dialogue any more to wait for
    if (isWhole && isDataHeld_ && !isHeard_) awaitStart();
    if (isWhole && isReplyAwaited_) awaitReply();
    if (isTurnOver_) setTimer(0);
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
        if (message->msg == CURLMSG_DONE) onDone(failureOf(message->data.result));
    }
}

/// A reply that tells where the data is to be had may leave the library with nothing to wait for, and it would never
/// connect there. A pause that ends at once has it look again.
void CurlSession::nudge() {
    curl_easy_pause(easy_, CURLPAUSE_RECV);
    curl_easy_pause(easy_, CURLPAUSE_CONT);
}

/// At the end of the data the library waits for the server's last word, up to a minute, and lets nothing else happen
/// meanwhile. So it is not shown the end before that word is there.
bool CurlSession::isReplyMissing(std::size_t coming) const {
    if (dataSocket() < 0 || isEncrypted_) return false;  // whose bytes cannot be told from those of the encryption
    const auto whole = size();
    const bool isWhole = whole > 0 && received_ + static_cast<std::int64_t>(coming) >= whole;
    // Whole pieces come out of one that was read, and a file that ends here is broken off anyway: no reason to look.
    const bool isInside = coming == CURL_MAX_WRITE_SIZE && whole - received_ > kReceiveBuffer;
    return (isWhole || (!isInside && isAtEnd(dataSocket()))) && !hasReply();
}

/// Whether the server has said more than the library has shown: it may have read a reply already and kept it.
bool CurlSession::hasReply() const {
    tcp_info info{};
    socklen_t length = sizeof info;
    constexpr std::size_t kNeeded = offsetof(tcp_info, tcpi_bytes_received) + sizeof info.tcpi_bytes_received;
    if (::getsockopt(controlSocket(), IPPROTO_TCP, TCP_INFO, &info, &length) < 0 || length < kNeeded) return true;
    return info.tcpi_bytes_received > replied_ || isReadable(controlSocket());
}

/// Goes on with a read that was held back as soon as the server has spoken.
void CurlSession::awaitReply() {
    const int control = controlSocket();
    runtime_.watch(control, EPOLLIN, [this, control](std::uint32_t) {
        isReplyAwaited_ = false;
        runtime_.unwatch(control);
        goOn();
        act(dataSocket(), CURL_CSELECT_IN);
    });
}

ReadFailure CurlSession::failureOf(CURLcode code) const {
    if (ownFailure_) return ownFailure_;
    if (code == CURLE_REMOTE_FILE_NOT_FOUND) return {kindOf(code), "The file does not exist"};
    if (code != CURLE_OK) return {kindOf(code), error_[0] ? error_.data() : curl_easy_strerror(code)};
    long answer = 0;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &answer);
    // A proxy that sends its user elsewhere has not sent the file.
    if (isOverHttp() && answer != 200) {
        return {ReadFailure::Kind::brokenOff, "the proxy's answer was " + std::to_string(answer)};
    }
    if (received_ < size()) {
        return {ReadFailure::Kind::brokenOff,
                std::to_string(received_) + " of " + std::to_string(size()) + " bytes have come"};
    }
    return {};
}

ReadFailure::Kind CurlSession::kindOf(CURLcode code) const {
    // Nothing but the offer of encryption has been answered by then.
    if (isTlsDue() && code != CURLE_PEER_FAILED_VERIFICATION) return ReadFailure::Kind::notEncrypted;
    return failureKind(code, replied_ > 0);
}

bool CurlSession::isOverHttp() const {
    const char* scheme = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_SCHEME, &scheme);
    return scheme && std::string_view(scheme).substr(0, 4) == "HTTP";
}

/// The socket of the FTP dialogue, or the one to the proxy; -1 when there is none.
int CurlSession::controlSocket() const { return sockets_.empty() ? -1 : sockets_.front(); }

int CurlSession::dataSocket() const { return sockets_.size() < 2 ? -1 : sockets_.back(); }

/// The library's own farewell waits for the answer of a server that may have fallen silent; on a socket that is shut
/// down it gives up at once.
void CurlSession::sayGoodbye() {
    const int control = controlSocket();
    if (control < 0) return;
    std::array<char, 4096> unread{};  // left lying it would turn the farewell into a reset
    for (int i = 0; i < kMostUnread; ++i) {
        if (::recv(control, unread.data(), unread.size(), MSG_DONTWAIT) <= 0) break;
    }
    if (!isOverHttp() && !isEncrypted_) ::send(control, kGoodbye, sizeof kGoodbye - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    ::shutdown(control, SHUT_RDWR);
}

}  // namespace corvane
