#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "platform/AsyncReader.h"
#include "platform/linux/events/LinuxRuntime.h"
#include "platform/linux/transfer/CurlSession.h"
#include "platform/linux/transfer/DownloadFile.h"

namespace corvane {

/// Reads over FTP with one login for all of them as long as server and account stay the same. The runtime is not owned
/// and must live longer. A cancelled transfer costs the connection; the next read logs in anew.
class CurlAsyncReader : public AsyncReader {
public:
    struct Limits {
        int connectMs = 30000;  ///< until the server has accepted the login
        int silenceMs = 60000;  ///< without any byte from the server
        int wholeMs = 1800000;  ///< for one read, login included
        int offerMs = 5000;     ///< until the server has answered the offer of encryption
    };

    explicit CurlAsyncReader(LinuxRuntime& runtime) : CurlAsyncReader(runtime, Limits()) {}
    CurlAsyncReader(LinuxRuntime& runtime, const Limits& limits);
    ~CurlAsyncReader() override;
    CurlAsyncReader(const CurlAsyncReader&) = delete;
    CurlAsyncReader& operator=(const CurlAsyncReader&) = delete;

    void start(const Address& address, const std::string& propertyName) override;
    void cancel(const std::optional<std::string>& propertyName) override;
    void closeSession() override;
    void route(const SiteRoute& route) override;
    void mostBytes(std::int64_t most) override { most_ = most; }
    std::string remark() const override { return remark_; }
    ReadFailure failure() const override { return failure_; }

private:
    struct Read {
        std::string propertyName;
        Address address;
        std::unique_ptr<DownloadFile> file;
        bool isFolder = false;
        bool isOver = false;
        bool isProgressDue = false;
        std::int64_t bytes = 0;
        ReadFailure fault{};      // found here, not by the session
        std::uint32_t begun = 0;  // tick
    };

    void begin();
    void openSession(const Address& address);
    bool takesLess(const ReadFailure& failure);
    void beginAgain();
    void drop();
    void onData(std::string_view bytes);
    void onDone(const ReadFailure& failure);
    void checkTime();
    void giveUp(const std::string& words);
    void stopTimer();
    void reportProgress();
    void reportCompletion();

    LinuxRuntime& runtime_;
    Limits limits_;
    SiteRoute route_;
    CurlSession::Tls tls_ = CurlSession::Tls::verified;  // what the next connection asks for
    std::string tlsServer_;                              // ... of this server; every other one is asked for all
    std::string remark_;
    std::int64_t most_ = std::numeric_limits<std::int64_t>::max();
    ReadFailure failure_;
    std::unique_ptr<CurlSession> session_;
    std::unique_ptr<Read> read_;
    std::optional<int> timer_;
    std::uint32_t lastSign_ = 0;  // tick of the last byte from the server
};

}  // namespace corvane
