#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "face/Log.h"
#include "face/Progress.h"
#include "ftp/FTPDownload.h"
#include "platform/files/ProgramFolder.h"
#include "settings/Choices.h"
#include "settings/StoredSettings.h"
#include "site/InfReader.h"
#include "site/SiteFailure.h"

namespace corvane {

/// What the way to the site is put together from.
struct SiteParts {
    FTPDownload& ftp;
    AsyncReader& reader;
    Runtime& runtime;
    const Choices& choices;
    SettingsStore& settings;
    const ProgramFolder& folder;
    Log& log;
    Progress& progress;
};

/// The maker's FTP site as a run uses it: login, downloads, and the idle watch that closes the session 180 seconds
/// after the login. Owns nothing it is given.
class SiteAccess {
public:
    explicit SiteAccess(const SiteParts& parts);
    ~SiteAccess();
    SiteAccess(const SiteAccess&) = delete;
    SiteAccess& operator=(const SiteAccess&) = delete;

    bool isConnected() const { return ftp_.IsConnected(); }

    /// Whether the session that is open is one with the chosen server and account, reached in the chosen way; another
    /// one is closed.
    [[nodiscard]] bool resume();

    /// Logs in with the chosen account and starts the idle watch; logs how it went.
    [[nodiscard]] bool login();
    void disconnect();

    /// Aborts a login or a transfer in progress; the session stays.
    void cancel();

    /// Looks at a fetched file where it lies before it is put in its place, which another program may share: what it
    /// reads there is what was fetched. Says why that is not what was meant; empty when it is.
    using Check = std::function<std::string(const std::string& fetched, const std::string& place)>;

    /// What a file may be, and what becomes of an older one.
    struct Terms {
        std::int64_t mostBytes = kMostBytes;
        Check check = nullptr;
        bool keepsOld = false;  ///< until the new one takes its place; else it goes before anything is asked
    };

    static constexpr std::int64_t kMostBytes = 64 << 20;        ///< of a file
    static constexpr std::int64_t kMostListingBytes = 1 << 20;  ///< that answers a login
    static constexpr std::int64_t kMostSignatureBytes = 64 << 10;
    static constexpr std::int64_t kMostProgramBytes = 256 << 20;  ///< of a newer copy of this program

    /// Fetches one file to a local path (system's bytes), whole or not at all. The caller chooses that path and takes
    /// no part of it unchecked from the site, which could otherwise write anywhere. Off line it does nothing and is
    /// True. False without a session, with nothing logged. A file that does not pass the check is a failed download.
    [[nodiscard]] bool FTP_Download(const std::string& strRemoteFile, const std::string& strLocalFile) {
        return FTP_Download(strRemoteFile, strLocalFile, Terms());
    }
    [[nodiscard]] bool FTP_Download(const std::string& strRemoteFile, const std::string& strLocalFile,
                                    const Terms& terms);

    /// Fetches an image into the Download folder under its own name; its path, or an empty text. Off line it is the one
    /// that lies there, if it passes the check.
    [[nodiscard]] std::string FTP_DownloadFirmware(const std::string& UrlFile, const Check& check = nullptr);

    /// Fetches firmware.inf, and has the reader take what came. Where lists have to be signed, its signature comes
    /// first; a list that is not to be believed changes nothing, on the disk or in the reader.
    [[nodiscard]] bool fetchInformation(InfReader& reader);

    /// What is to be known of the last login or list beside how it went, a sentence each in UTF-8; told once.
    std::vector<std::string> takeRemarks() { return std::exchange(remarks_, {}); }

    /// Fetches a file that has nothing to do with updates, off line, too, and logs in for it when there is no session.
    [[nodiscard]] bool fetchReference(const std::string& remote, const std::string& local);

    /// Why the last login or download was none; none when it was one.
    const SiteFailure& failure() const { return failure_; }

    /// Why there is no session.
    SiteFailure withoutSession() const;

private:
    SiteRoute wantedRoute() const;
    void download(const std::string& remote, const std::string& local, const Terms& terms);
    SiteFailure fetch(const std::string& remote, const std::string& local, const Terms& terms);
    bool fetchSignature(ListTrust& trust, std::string& signature);
    bool fetchSigned(InfReader& reader, ListTrust& trust);
    void FtpTimer_Timer();
    void stopTimer();

    FTPDownload& ftp_;
    AsyncReader& reader_;
    Runtime& runtime_;
    const Choices& choices_;
    SettingsStore& settings_;
    const ProgramFolder& folder_;
    Log& log_;
    Progress& progress_;
    SiteRoute route_;  // of the session
    int timer_ = 0;
    std::int16_t ftpIdleSeconds_ = 0;
    bool connecting_ = false;
    bool transferActive_ = false;
    bool isClosedByWatch_ = false;  // the last session
    SiteFailure failure_;
    std::vector<std::string> remarks_;
};

}  // namespace corvane
