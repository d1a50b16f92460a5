#include "site/SiteAccess.h"

#include "platform/Files.h"
#include "text/Cp1252.h"

namespace corvane {
namespace {

constexpr std::int16_t kIdleSeconds = 180;

/// Sets a flag for as long as it lives.
class Flag {
public:
    explicit Flag(bool& flag) : flag_(flag) { flag_ = true; }
    ~Flag() { flag_ = false; }
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

private:
    bool& flag_;
};

}  // namespace

SiteAccess::SiteAccess(FTPDownload& ftp, AsyncReader& reader, Runtime& runtime, const Choices& choices,
                       SettingsStore& settings, const ProgramFolder& folder, Log& log, Progress& progress)
    : ftp_(ftp),
      reader_(reader),
      runtime_(runtime),
      choices_(choices),
      settings_(settings),
      folder_(folder),
      log_(log),
      progress_(progress) {
    ftp_.GetProgress = [this](std::int32_t percent) { progress_.progress(percent, 100); };
    ftp_.AsyncReadProgress = [this](const AsyncResult& read) { progress_.transferred(read.bytesRead, read.bytesMax); };
}

SiteAccess::~SiteAccess() {
    ftp_.GetProgress = nullptr;
    ftp_.AsyncReadProgress = nullptr;
    stopTimer();
}

bool SiteAccess::login() {
    rejection_.clear();
    ftp_.ErrorLogClear();
    ftp_.HostName(choices_.server);
    ftp_.Username(choices_.userName);
    ftp_.Password(choices_.password);
    reader_.route(ConnectionSettings::load(settings_).route());
    log_.ShowInfo("Login Server...");
    bool connected = false;
    {
        const Flag flag(connecting_);
        connected = ftp_.Connect();
    }
    log_.ShowInfo(connected ? " < OK\r\n" : " < NG\r\n");
    if (!connected) {
        log_.ShowInfo(ftp_.ErrorLogText());
        return false;
    }
    ftpIdleSeconds_ = kIdleSeconds;
    stopTimer();
    timer_ = runtime_.startTimer(1000, [this] { FtpTimer_Timer(); });
    return true;
}

void SiteAccess::disconnect() { ftp_.Disconnect(); }

void SiteAccess::cancel() {
    if (connecting_ || transferActive_) ftp_.CancelAsyncRead();
}

bool SiteAccess::FTP_Download(const std::string& strRemoteFile, const std::string& strLocalFile, const Check& check) {
    rejection_.clear();
    if (choices_.offLine) return true;
    ftp_.ErrorLogClear();
    if (!ftp_.IsConnected()) return false;
    const bool isCleared = deleteFile(strLocalFile);
    progress_.progress(0, 100);
    log_.ShowInfo("Downloading File...");
    bool fetched = false;
    if (isCleared) {
        const Flag flag(transferActive_);
        fetched =
            ftp_.GetFile(strRemoteFile.compare(0, 1, "/") == 0 ? strRemoteFile : "/" + strRemoteFile, strLocalFile);
    }
    if (!isCleared) rejection_ = "the old " + strLocalFile + " cannot be replaced";
    if (fetched && check) rejection_ = check(strLocalFile);
    if (fetched && !rejection_.empty()) {
        fetched = false;
        deleteFile(strLocalFile);
    }
    progress_.progress(0, 100);
    log_.ShowInfo(fetched ? " < OK\r\n" : " < NG\r\n");
    if (!fetched) log_.ShowInfo(ftp_.ErrorLogText());
    return fetched;
}

std::string SiteAccess::FTP_DownloadFirmware(const std::string& UrlFile, const Check& check) {
    const auto download = folder_.resolve("\\Download");
    makeFolder(download);
    const auto slash = UrlFile.rfind('/');
    const auto name = toUtf8(slash == std::string::npos ? UrlFile : UrlFile.substr(slash + 1));
    if (!isSafeFileName(name)) {
        rejection_ = "firmware.inf calls its file \"" + name + "\", which is no safe name for one";
        // Whatever such a name leads to, it is not an image in the Download folder.
        if (!choices_.offLine && isConnected()) log_.ShowInfo("Downloading File... < NG\r\n");
        return {};
    }
    const auto path = folder_.resolve("\\Download\\" + name);
    if (!FTP_Download(UrlFile, path, check)) return {};
    if (choices_.offLine && check && FileExists(path)) rejection_ = check(path);
    return rejection_.empty() ? path : std::string();
}

void SiteAccess::FtpTimer_Timer() {
    if (!ftp_.IsConnected()) return;
    if (ftpIdleSeconds_ > 0) {
        --ftpIdleSeconds_;
        return;
    }
    stopTimer();
    ftp_.Disconnect();
    log_.ShowInfo("Service disconnect\r\n");
}

void SiteAccess::stopTimer() {
    if (timer_) runtime_.stopTimer(timer_);
    timer_ = 0;
}

}  // namespace corvane
