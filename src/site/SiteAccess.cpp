#include "site/SiteAccess.h"

#include "platform/files/Files.h"
#include "text/Cp1252.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::int16_t kIdleSeconds = 180;
constexpr char kListPath[] = "/firmware/firmware.inf";

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

using Kind = SiteFailure::Kind;

/// Why a login or a download failed, as far as the transfer alone knows. A transfer that fails without a reason was
/// cancelled.
SiteFailure failureOf(const ReadFailure& read, const std::string& server) {
    switch (read.kind) {
        case ReadFailure::Kind::none:
            break;
        case ReadFailure::Kind::noAddress:
            return {Kind::noServer, read.words};
        case ReadFailure::Kind::noFile:
            return {Kind::unusableName, read.words};
        case ReadFailure::Kind::unreachable:
            return {Kind::unreachable, "the server " + server + " cannot be reached: " + read.words};
        case ReadFailure::Kind::login:
            return {Kind::loginRefused, "the server did not accept user name and password: " + read.words};
        case ReadFailure::Kind::notEncrypted:
            return {Kind::notEncrypted, "encryption is required, and the server does not give it: " + read.words};
        case ReadFailure::Kind::notVouched:
            return {Kind::notEncrypted, "encryption is required, and nobody vouches for the server: " + read.words};
        case ReadFailure::Kind::refused:
            return {Kind::notGiven, "the server does not give it: " + read.words};
        case ReadFailure::Kind::brokenOff:
            return {Kind::brokenOff, "the transfer broke off: " + read.words};
        case ReadFailure::Kind::tooLong:
            return {Kind::tooLong, read.words + ", which is more than is taken"};
        case ReadFailure::Kind::oldStays:
            return {Kind::oldFileStays, read.words};
        case ReadFailure::Kind::storage:
            return {Kind::notStored, "it could not be stored: " + read.words};
    }
    return {Kind::cancelled, "it was cancelled"};
}

/// The same for a login, which consists in fetching a folder's listing.
SiteFailure loginFailureOf(const ReadFailure& read, const std::string& server) {
    auto failure = failureOf(read, server);
    if (failure.kind == Kind::notGiven) {
        return {Kind::listingRefused,
                "the server accepted user name and password, but gives no listing: " + read.words};
    }
    if (failure.kind == Kind::tooLong) return {Kind::tooLong, "the server's listing is too long: " + read.words};
    if (failure.kind == Kind::brokenOff) failure.words = "the dialogue with the server broke off: " + read.words;
    return failure;
}

/// Empty when the file was read, else why what was fetched is none.
std::string readInto(std::string& content, const std::string& path) {
    try {
        content = readFile(path);
        return {};
    } catch (const RuntimeError&) {
        return "what has come cannot be read";
    }
}

}  // namespace

SiteAccess::SiteAccess(const SiteParts& parts)
    : ftp_(parts.ftp),
      reader_(parts.reader),
      runtime_(parts.runtime),
      choices_(parts.choices),
      settings_(parts.settings),
      folder_(parts.folder),
      log_(parts.log),
      progress_(parts.progress) {
    ftp_.GetProgress = [this](std::int32_t percent) { progress_.progress(percent, 100); };
    ftp_.AsyncReadProgress = [this](const AsyncResult& read) { progress_.transferred(read.bytesRead, read.bytesMax); };
}

SiteAccess::~SiteAccess() {
    ftp_.GetProgress = nullptr;
    ftp_.AsyncReadProgress = nullptr;
    stopTimer();
}

bool SiteAccess::resume() {
    failure_ = {};
    isClosedByWatch_ = false;
    if (!ftp_.IsConnected()) return false;
    if (ftp_.HostName() == choices_.server && ftp_.Username() == choices_.userName &&
        ftp_.Password() == choices_.password && route_ == wantedRoute()) {
        return true;
    }
    disconnect();
    return false;
}

SiteRoute SiteAccess::wantedRoute() const {
    auto route = StoredSettings(settings_).connection().route();
    if (choices_.encryption) route.encryption = *choices_.encryption;
    if (choices_.authorities) route.authorities = *choices_.authorities;
    return route;
}

bool SiteAccess::login() {
    failure_ = {};
    isClosedByWatch_ = false;
    ftp_.ErrorLogClear();
    ftp_.HostName(choices_.server);
    ftp_.Username(choices_.userName);
    ftp_.Password(choices_.password);
    route_ = wantedRoute();
    reader_.route(route_);
    log_.ShowInfo("Login Server...");
    reader_.mostBytes(kMostListingBytes);
    bool connected = false;
    {
        const Flag flag(connecting_);
        connected = ftp_.Connect();
    }
    log_.ShowInfo(connected ? " < OK\r\n" : " < NG\r\n");
    if (!connected) {
        log_.ShowInfo(ftp_.ErrorLogText());
        failure_ = loginFailureOf(ftp_.failure(), choices_.server);
        disconnect();  // a server that accepted the login and gave no listing would be left logged in
        return false;
    }
    if (auto remark = reader_.remark(); !remark.empty()) remarks_.push_back(std::move(remark));
    ftpIdleSeconds_ = kIdleSeconds;
    stopTimer();
    timer_ = runtime_.startTimer(1000, [this] { FtpTimer_Timer(); });
    return true;
}

void SiteAccess::disconnect() { ftp_.Disconnect(); }

void SiteAccess::cancel() {
    if (connecting_ || transferActive_) ftp_.CancelAsyncRead();
}

SiteFailure SiteAccess::withoutSession() const {
    if (isClosedByWatch_) {
        return {Kind::sessionClosed,
                "the session with the site was closed, as it always is three minutes after the login"};
    }
    return {Kind::noSession, "there is no session with the site"};
}

bool SiteAccess::FTP_Download(const std::string& strRemoteFile, const std::string& strLocalFile, const Terms& terms) {
    failure_ = {};
    if (!choices_.offLine) download(strRemoteFile, strLocalFile, terms);
    return !failure_;
}

void SiteAccess::download(const std::string& remote, const std::string& local, const Terms& terms) {
    ftp_.ErrorLogClear();
    if (!ftp_.IsConnected()) {
        failure_ = withoutSession();
        return;
    }
    progress_.progress(0, 100);
    log_.ShowInfo("Downloading File...");
    failure_ = fetch(remote, local, terms);
    progress_.progress(0, 100);
    log_.ShowInfo(failure_ ? " < NG\r\n" : " < OK\r\n");
    if (failure_) log_.ShowInfo(ftp_.ErrorLogText());
}

SiteFailure SiteAccess::fetch(const std::string& remote, const std::string& local, const Terms& terms) {
    std::string why;
    if (!terms.keepsOld && !deleteFile(local, why))
        return {Kind::oldFileStays, "the old " + local + " cannot be replaced: " + why};
    std::string fault;
    ftp_.isWanted = [&](const std::string& fetched) {
        if (terms.check) fault = terms.check(fetched, local);
        return fault.empty();
    };
    reader_.mostBytes(terms.mostBytes);
    bool isFetched = false;
    {
        const Flag flag(transferActive_);
        isFetched = ftp_.GetFile(remote.starts_with('/') ? remote : "/" + remote, local);
    }
    ftp_.isWanted = nullptr;
    if (isFetched) return {};
    if (!fault.empty()) return {Kind::wrongContent, fault};
    // The idle watch may have closed the session in the middle of the transfer.
    if (!ftp_.failure() && !ftp_.IsConnected()) return withoutSession();
    return failureOf(ftp_.failure(), choices_.server);
}

bool SiteAccess::fetchInformation(InfReader& reader) {
    if (auto* trust = reader.trust()) return fetchSigned(reader, *trust);
    const Check take = [&reader](const std::string& fetched, const std::string&) {
        std::string list;
        auto fault = readInto(list, fetched);
        if (fault.empty()) reader.take(std::move(list), {});
        return fault;
    };
    return FTP_Download(kListPath, reader.informationPath(), {.check = take, .keepsOld = true});
}

bool SiteAccess::fetchSigned(InfReader& reader, ListTrust& trust) {
    std::string signature;
    trust.settle();
    if (!fetchSignature(trust, signature)) return false;
    Judgement judgement;
    const Check take = [&](const std::string& fetched, const std::string&) {
        std::string list;
        if (auto fault = readInto(list, fetched); !fault.empty()) return fault;
        judgement =
            choices_.acceptsOlderList ? trust.judge(list, signature) : trust.judge(list, signature, choices_.server);
        if (judgement.voucher) reader.take(std::move(list), judgement.voucher);
        return judgement.fault;
    };
    if (!FTP_Download(kListPath, reader.informationPath(), {.check = take, .keepsOld = true})) {
        if (!judgement.fault.empty()) failure_.kind = Kind::notBelieved;
        deleteFile(trust.incomingPath());
        return false;
    }
    if (!judgement.voucher) return true;  // off line nothing was fetched
    const auto problem = trust.keep(signature, *judgement.voucher, choices_.server);
    if (!problem.empty()) remarks_.push_back(problem);
    return true;
}

/// Into the place where it waits for its list.
bool SiteAccess::fetchSignature(ListTrust& trust, std::string& signature) {
    const Check read = [&signature](const std::string& fetched, const std::string&) {
        return readInto(signature, fetched);
    };
    if (FTP_Download("/firmware/" + std::string(kSignatureName), trust.incomingPath(),
                     {.mostBytes = kMostSignatureBytes, .check = read, .keepsOld = true})) {
        return true;
    }
    if (failure_.kind == Kind::notGiven)
        failure_ = {Kind::notBelieved,
                    "it is not signed (" + std::string(kSignatureName) + ": " + failure_.words + ")"};
    return false;
}

bool SiteAccess::fetchReference(const std::string& remote, const std::string& local) {
    if (!resume() && !login()) return false;
    download(remote, local, {});
    return !failure_;
}

std::string SiteAccess::FTP_DownloadFirmware(const std::string& UrlFile, const Check& check) {
    const auto download = folder_.resolve("\\Download");
    makeFolder(download);
    const auto name = toUtf8(lastPart(UrlFile));
    if (!isSafeFileName(name)) {
        // Whatever such a name leads to, it is not an image in the Download folder.
        if (!choices_.offLine && isConnected()) log_.ShowInfo("Downloading File... < NG\r\n");
        const auto shown = "\"" + onOneLine(toUtf8(UrlFile)) + "\"";
        failure_ = {Kind::unusableName, name.empty() ? shown + " names a folder and no file"
                                                     : "the site's name for it, " + shown + ", may be no file's here"};
        return {};
    }
    auto path = folder_.resolve("\\Download\\" + name);
    const auto most = static_cast<std::int64_t>(choices_.mostImageBytes);
    if (!FTP_Download(UrlFile, path, {.mostBytes = most, .check = check})) return {};
    if (!choices_.offLine) return path;
    if (!FileExists(path)) {
        failure_ = {Kind::notDownloaded, name + " does not lie in the Download folder"};
    } else if (const auto fault = check ? check(path, path) : std::string(); !fault.empty()) {
        failure_ = {Kind::wrongContent, fault};
    }
    return failure_.kind == Kind::wrongContent ? std::string() : path;
}

void SiteAccess::FtpTimer_Timer() {
    if (!ftp_.IsConnected()) return;
    if (ftpIdleSeconds_ > 0) {
        --ftpIdleSeconds_;
        return;
    }
    stopTimer();
    isClosedByWatch_ = true;
    ftp_.Disconnect();
    log_.ShowInfo("Service disconnect\r\n");
}

void SiteAccess::stopTimer() {
    if (timer_) runtime_.stopTimer(timer_);
    timer_ = 0;
}

}  // namespace corvane
