#pragma once

#include <array>
#include <cstdint>
#include <curl/curl.h>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/AsyncReader.h"
#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// The address as the transfer library takes it: without the account, the path absolute also when the login leads to a
/// folder further down.
std::string curlUrl(const Address& address);

/// One login at one server, kept open between the reads that it serves one after the other. The transfer library is
/// driven by the runtime's descriptors and never waits by itself. Constructor and begin throw std::runtime_error.
class CurlSession {
public:
    /// All three are called inside waits too, and must not end the session. onData may throw, which ends the read.
    std::function<void(std::string_view bytes)> onData;
    std::function<void()> onReply;                           ///< the server has said something
    std::function<void(const ReadFailure& failure)> onDone;  ///< none when everything has come

    /// What of the encryption is asked for.
    enum class Tls {
        none,
        unverified,  ///< where the server offers it, whoever it is
        verified,    ///< where the server offers it, with a valid certificate
        required     ///< always, with a valid certificate
    };

    /// How long, in ms, until the login is accepted, and of that until an offer of encryption has led to something. The
    /// library lets nothing else happen while the encryption begins.
    struct Limits {
        int connect, offer;
    };

    CurlSession(LinuxRuntime& runtime, const Address& address, const SiteRoute& route, Tls tls, Limits limits);

    /// Says QUIT, where nothing is encrypted, and leaves at once, in the middle of a read too.
    ~CurlSession();
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;

    /// Starts a read; the last one must be done.
    void begin(const Address& address);

    /// Whether the same server and account are meant.
    bool isFor(const Address& address) const;

    /// False when there is no connection, or the server has ended it.
    bool isOpen() const;

    /// Whether the server has been asked for encryption, and nothing has come of it yet: it has not answered, or has
    /// answered, and nothing follows.
    bool isTlsDue() const { return tls_ != Tls::none && (replies_ == 1 || replies_ == 2); }
    bool isEncrypted() const { return isEncrypted_; }

    /// Bytes that the running read will bring, as the server announces; 0 when it does not. A file that turns out
    /// to have more or fewer is none.
    std::int64_t size() const;

private:
    CurlSession(LinuxRuntime& runtime, const Address& address);

    static int onSocketChange(CURL*, curl_socket_t socket, int what, void* self, void*);
    static int onTimeChange(CURLM*, long ms, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onConnected(void* self, char*, char*, int, int);
    static curl_socket_t onOpen(void* self, curlsocktype, curl_sockaddr* address);
    static int onClose(void* self, curl_socket_t socket);
    static int onDebug(CURL*, curl_infotype kind, char* text, std::size_t size, void* self);
    static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

    template <class Value>
    void set(CURLoption option, Value value);
    void applyRoute(const SiteRoute& route);
    void applyTls(const SiteRoute& route);
    void askForSize(const Address& address);
    void takeReply(std::string_view line);
    void limitOffer();
    void holdData(int socket);
    void releaseData();
    void awaitStart();
    long greetingPause() const;
    void limitConnect(bool isOfferDue);
    void onSocket(int socket, std::uint32_t events);
    void setTimer(long ms);
    void onTimer();
    void goOn();
    void act(int socket, int events);
    void nudge();
    bool isReplyMissing(std::size_t coming) const;
    bool hasReply() const;
    void awaitReply();
    bool isOverHttp() const;
    ReadFailure failureOf(CURLcode code) const;
    ReadFailure::Kind kindOf(CURLcode code) const;
    int controlSocket() const;
    int dataSocket() const;
    void sayGoodbye();

    LinuxRuntime& runtime_;
    Address address_;
    Tls tls_ = Tls::none;
    Limits limits_{};
    std::uint32_t begun_ = 0;  // tick
    CURLM* multi_;
    CURL* easy_;
    int timer_;
    std::vector<int> sockets_;   // open ones, oldest first: the dialogue's, then the data's
    std::int64_t received_ = 0;  // bytes of the running read
    std::int64_t announced_ = 0;
    curl_slist* question_ = nullptr;  // for the size, as the library sends it
    std::uint64_t replied_ = 0;       // bytes of the dialogue that the library has shown
    bool hasReplied_ = false;
    int replies_ = 0;  // of the dialogue, whole ones
    bool isEncrypted_ = false;
    bool isReplyAwaited_ = false;  // a held read goes on with the server's next words
    bool isTurnOver_ = false;      // ... or after the other events that are due
    std::uint32_t turn_ = 0;       // when this one began
    bool isHeard_ = false;         // the library waits for the server's words
    bool isFileAsked_ = false;     // where the session is encrypted: by the last command
    bool isPatient_ = false;       // what the library waits for is not its own next step
    std::uint32_t released_ = 0;   // tick at which the greeting on the data connection was let go
    bool isDataHeld_ = false;      // until the server has said that the file comes
    bool isDataOver_ = false;      // of the running read: only the server's last word is missing
    std::uint32_t lastCall_ = 0;   // tick of the last sign that the library goes on
    ReadFailure ownFailure_;       // what went wrong in a callback, where the library only learns that something did
    std::array<char, CURL_ERROR_SIZE> error_{};
};

}  // namespace corvane
