#include "ftp/FTPDownload.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "text/Number.h"

namespace corvane {
namespace {

constexpr std::int32_t kAsyncTypeFile = 1;
constexpr int kRound = 10;  // ms of one round of a waiting loop

/// The receiver of a completion owns its temporary file: it goes when nobody has put it in place.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

private:
    std::string path_;
};

}  // namespace

/// One running operation: however it ends, by an exception too, the control is idle afterwards and nothing is left
/// reading behind it.
class FTPDownload::Operation {
public:
    Operation(FTPDownload& control, Mode mode) : control_(control) {
        control_.m_iMode = mode;
        control_.m_oFailure = {};
    }
    ~Operation() {
        if (!isLeftRunning_) control_.reader_.cancel(std::nullopt);
        control_.m_iMode = kIdle;
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    void leaveRunning() { isLeftRunning_ = true; }

private:
    FTPDownload& control_;
    bool isLeftRunning_ = false;
};

FTPDownload::FTPDownload(AsyncReader& reader, Runtime& runtime) : reader_(reader), runtime_(runtime) {
    reader_.onProgress = [this](const AsyncResult& result) { onProgress(result); };
    reader_.onComplete = [this](const AsyncResult& result) { onComplete(result); };
}

FTPDownload::~FTPDownload() {
    reader_.cancel(std::nullopt);
    reader_.onProgress = nullptr;
    reader_.onComplete = nullptr;
}

Address FTPDownload::address(const std::string& szRemote) const {
    Address address;
    address.user = m_szUsername;
    address.password = m_szPassword;
    address.server(m_szHostName);
    address.path = szRemote;
    return address;
}

void FTPDownload::AsyncRead(const std::string& Target, std::int32_t AsyncType,
                            const std::optional<std::string>& PropertyName) {
    // A text that is no address has no server, which the reader refuses.
    AsyncRead(Address::parse(Target).value_or(Address()), AsyncType, PropertyName);
}

void FTPDownload::AsyncRead(const Address& Target, std::int32_t AsyncType,
                            const std::optional<std::string>& PropertyName) {
    const auto name = PropertyName.value_or(std::string());
    try {
        if (AsyncType != kAsyncTypeFile) throw std::runtime_error("this kind of read is not offered");
        reader_.start(Target, name);
    } catch (const std::exception& error) {
        m_oFailure = {ReadFailure::Kind::brokenOff, error.what()};
        onComplete({0, 0, name, {}});
    }
}

void FTPDownload::CancelAsyncRead(const std::optional<std::string>& Property) {
    reader_.cancel(Property);
    m_bCancel = true;
    // Connect has no other way out than a completion, and of a cancelled read none will come.
    if (m_iMode == kConnecting && (!Property || Property->empty())) m_iConnectState = kNoAnswer;
}

bool FTPDownload::Connect() {
    if (m_iMode != kIdle) return false;
    const Operation operation(*this, kConnecting);
    m_iConnectState = kWaiting;
    AsyncRead(address({}), kAsyncTypeFile);
    while (m_iConnectState == kWaiting) {
        runtime_.WaitActivity(kRound);
        runtime_.DoEvents();
    }
    m_bIsConnected = m_iConnectState == kAnswered;
    return m_bIsConnected;
}

void FTPDownload::Disconnect() {
    if (m_iMode != kIdle) CancelAsyncRead();
    m_bIsConnected = false;
    reader_.closeSession();
}

bool FTPDownload::GetFile(const std::string& szRemote, const std::string& szLocal, bool bAsync) {
    m_bCancel = false;
    if (m_iMode != kIdle) return false;
    const auto target = address(szRemote);
    if (target.isFolder()) {
        m_oFailure = {ReadFailure::Kind::noFile, "\"" + szRemote + "\" names a folder and no file"};
        return false;
    }
    Operation operation(*this, kDownloading);
    m_bDone = false;
    m_oLastAsyncProp.reset();
    m_bSaveToFile = !bAsync;
    try {
        AsyncRead(target, kAsyncTypeFile, szLocal);
        if (!bAsync) return isLocalFileFetched();
        operation.leaveRunning();
        return true;
    } catch (const std::exception& error) {
        m_oFailure = {ReadFailure::Kind::brokenOff, error.what()};
        return false;
    }
}

/// The waiting loop of a blocking download.
bool FTPDownload::isLocalFileFetched() {
    const double start = runtime_.secondsOfDay();
    while (!m_bDone) {
        runtime_.WaitActivity(kRound);
        runtime_.DoEvents();
        if (m_bCancel) break;
        // Past midnight the difference is negative, and the wait goes on.
        if (runtime_.secondsOfDay() - start > g_lTimeout) {
            if (!m_bDone) m_oFailure = {ReadFailure::Kind::brokenOff, "it took too long"};
            break;
        }
    }
    return m_oLastAsyncProp && m_oLastAsyncProp->bytesRead >= 1;
}

void FTPDownload::onProgress(const AsyncResult& AsyncProp) {
    if (m_iMode != kDownloading) return;
    m_bDone = false;
    if (AsyncProp.bytesMax > 0 && GetProgress) {
        // A file that grows while it is read must not take the percentage past its end.
        const double read = static_cast<double>(std::min(AsyncProp.bytesRead, AsyncProp.bytesMax));
        GetProgress(toLong(read / static_cast<double>(AsyncProp.bytesMax) * 100));
    }
    if (AsyncReadProgress) AsyncReadProgress(AsyncProp);
}

void FTPDownload::onComplete(AsyncResult AsyncProp) {
    const TemporaryFile temporary(AsyncProp.value);
    if (m_iMode == kConnecting) {
        m_iConnectState = AsyncProp.bytesRead >= 1 ? kAnswered : kNoAnswer;
    } else if (m_iMode == kDownloading) {
        if (AsyncProp.bytesRead > 0 && m_bSaveToFile && !AsyncProp.propertyName.empty() && !putInPlace(AsyncProp)) {
            AsyncProp.bytesRead = 0;
        }
        m_bDone = true;
        m_oLastAsyncProp = AsyncProp;
        if (AsyncReadComplete) AsyncReadComplete(AsyncProp);
    }
}

bool FTPDownload::putInPlace(const AsyncResult& AsyncProp) {
    if (isWanted && !isWanted(AsyncProp.value)) return false;
    std::error_code error, ignored;
    const auto& place = AsyncProp.propertyName;
    std::filesystem::rename(AsyncProp.value, place, error);
    if (!error) return true;
    const bool isOld = std::filesystem::exists(std::filesystem::symlink_status(place, ignored));
    m_oFailure =
        isOld ? ReadFailure{ReadFailure::Kind::oldStays, "the old " + place + " cannot be replaced: " + error.message()}
              : ReadFailure{ReadFailure::Kind::storage, place + ": " + error.message()};
    return false;
}

}  // namespace corvane
