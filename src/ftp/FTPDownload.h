#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/AsyncReader.h"
#include "platform/Runtime.h"

namespace corvane {

/// Fetches files of an FTP server through the asynchronous reader, and lets events run while it waits. It owns neither
/// reader nor runtime. One operation runs at a time; one that fails is False, with the reason in failure().
class FTPDownload {
public:
    FTPDownload(AsyncReader& reader, Runtime& runtime);
    ~FTPDownload();
    FTPDownload(const FTPDownload&) = delete;
    FTPDownload& operator=(const FTPDownload&) = delete;

    /// A download finished; the file is in place already, or there is none.
    std::function<void(const AsyncResult& AsyncProp)> AsyncReadComplete;
    std::function<void(const AsyncResult& AsyncProp)> AsyncReadProgress;

    /// Percentage of a download, 0 to 100; not raised when the size is not known.
    std::function<void(std::int32_t lDone)> GetProgress;

    /// Asked about a file that has come whole, while it still lies under a name of this program's own: False keeps it
    /// from being put in place, and the download has failed.
    std::function<bool(const std::string& path)> isWanted;

    /// Starts a read. AsyncType 1 reads into a file, the only kind there is; an error counts as an answer of 0 bytes.
    /// A target that is one text has its parts escaped.
    void AsyncRead(const std::string& Target, std::int32_t AsyncType,
                   const std::optional<std::string>& PropertyName = std::nullopt);
    void AsyncRead(const Address& Target, std::int32_t AsyncType,
                   const std::optional<std::string>& PropertyName = std::nullopt);

    /// Ends the read of that property, or any; a running Connect or GetFile is False then. The session stays.
    void CancelAsyncRead(const std::optional<std::string>& Property = std::nullopt);

    bool IsConnected() const { return m_bIsConnected; }

    /// "host" or "host:port"; this and the account may hold any character.
    const std::string& HostName() const { return m_szHostName; }
    void HostName(const std::string& szValue) { m_szHostName = szValue; }
    const std::string& Username() const { return m_szUsername; }
    void Username(const std::string& szValue) { m_szUsername = szValue; }
    const std::string& Password() const { return m_szPassword; }
    void Password(const std::string& szValue) { m_szPassword = szValue; }

    /// True when the server answers with data. Waits as long as the reader does.
    [[nodiscard]] bool Connect();

    /// Cancels what is running and takes leave of the server.
    void Disconnect();

    /// Fetches the remote path (with a leading "/") to a local one, in the system's bytes; what lies there is replaced
    /// once everything has come. False for an empty file too, and for a path that ends in "/", which is no file's. With
    /// bAsync it is True at once, and nothing is delivered.
    [[nodiscard]] bool GetFile(const std::string& szRemote, const std::string& szLocal, bool bAsync = false);

    /// There is no error log: always empty, and clearing it always works.
    std::string ErrorLogText() const { return {}; }
    bool ErrorLogClear() { return true; }

    /// Why the last operation failed; none when it did not or was cancelled.
    ReadFailure failure() const { return m_oFailure ? m_oFailure : reader_.failure(); }

private:
    enum Mode : std::int16_t { kIdle = 0, kConnecting = 1, kDownloading = 2 };
    enum ConnectState : std::int16_t { kNoAnswer = 0, kAnswered = 1, kWaiting = 2 };
    class Operation;

    Address address(const std::string& szRemote) const;
    bool isLocalFileFetched();
    void onProgress(const AsyncResult& AsyncProp);
    void onComplete(AsyncResult AsyncProp);
    bool putInPlace(const AsyncResult& AsyncProp);

    AsyncReader& reader_;
    Runtime& runtime_;
    std::string m_szHostName, m_szUsername, m_szPassword;
    ReadFailure m_oFailure;  // of this control's own making
    bool m_bIsConnected = false;
    std::int32_t g_lTimeout = 30000;  // compared with a clock of seconds, so it is as good as none
    std::int16_t m_iMode = kIdle;
    std::int16_t m_iConnectState = kNoAnswer;
    bool m_bDone = false;
    bool m_bSaveToFile = false;
    bool m_bCancel = false;
    std::optional<AsyncResult> m_oLastAsyncProp;
};

}  // namespace corvane
