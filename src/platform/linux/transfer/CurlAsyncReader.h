#pragma once

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
    };

    explicit CurlAsyncReader(LinuxRuntime& runtime) : CurlAsyncReader(runtime, Limits()) {}
    CurlAsyncReader(LinuxRuntime& runtime, const Limits& limits);
    ~CurlAsyncReader() override;
    CurlAsyncReader(const CurlAsyncReader&) = delete;
    CurlAsyncReader& operator=(const CurlAsyncReader&) = delete;

    void start(const Address& address, const std::string& propertyName) override;
    void cancel(const std::optional<std::string>& propertyName) override;
    void closeSession() override;
    void route(const SiteRoute& route) override { route_ = route; }
    ReadFailure failure() const override { return failure_; }

private:
    struct Read {
        std::string propertyName;
        std::unique_ptr<DownloadFile> file;
        bool isFolder = false;
        bool isOver = false;
        bool isProgressDue = false;
        std::int64_t bytes = 0;
    };

    void begin(const Address& address);
    void openSession(const Address& address);
    void drop();
    void onData(std::string_view bytes);
    void onDone(const ReadFailure& failure);
    void checkSilence();
    void stopSilenceTimer();
    void reportProgress();
    void reportCompletion();

    LinuxRuntime& runtime_;
    Limits limits_;
    SiteRoute route_;
    ReadFailure failure_;
    std::unique_ptr<CurlSession> session_;
    std::unique_ptr<Read> read_;
    std::optional<int> silenceTimer_;
    std::uint32_t lastSign_ = 0;  // tick of the last byte from the server
};

}  // namespace corvane
