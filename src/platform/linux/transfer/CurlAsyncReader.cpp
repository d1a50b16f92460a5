#include "platform/linux/transfer/CurlAsyncReader.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "text/Number.h"

namespace corvane {
namespace {

constexpr int kLongestPause = 1000;  // ms between two looks

}  // namespace

CurlAsyncReader::CurlAsyncReader(LinuxRuntime& runtime, const Limits& limits) : runtime_(runtime), limits_(limits) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
}

CurlAsyncReader::~CurlAsyncReader() {
    drop();
    session_.reset();
    curl_global_cleanup();
}

void CurlAsyncReader::start(const Address& address, const std::string& propertyName) {
    drop();
    failure_ = {};
    read_ = std::make_unique<Read>();
    read_->propertyName = propertyName;
    read_->address = address;
    read_->isFolder = address.isFolder();
    if (const auto fault = address.fault(); !fault.empty()) return onDone({ReadFailure::Kind::noAddress, fault});
    try {
        read_->file = std::make_unique<DownloadFile>(propertyName);
        begin();
    } catch (const std::system_error& error) {
        onDone({ReadFailure::Kind::storage, error.what()});
    } catch (const std::exception& error) {
        onDone({ReadFailure::Kind::brokenOff, error.what()});
    }
}

void CurlAsyncReader::begin() {
    openSession(read_->address);
    session_->begin(read_->address);
    lastSign_ = read_->begun = runtime_.tick();
    const int pause = std::min({limits_.silenceMs, limits_.wholeMs, limits_.offerMs}) / 2;
    timer_ = runtime_.startTimer(std::clamp(pause, 1, kLongestPause), [this] { checkTime(); });
}

void CurlAsyncReader::openSession(const Address& address) {
    if (session_ && session_->isFor(address) && session_->isOpen()) return;
    session_.reset();
    if (std::exchange(tlsServer_, address.server()) != address.server()) route(route_);
    session_ = std::make_unique<CurlSession>(runtime_, address, route_, tls_,
                                             CurlSession::Limits{limits_.connectMs, limits_.offerMs});
    session_->onData = [this](std::string_view bytes) { onData(bytes); };
    session_->onReply = [this] { lastSign_ = runtime_.tick(); };
    session_->onDone = [this](const ReadFailure& failure) { onDone(failure); };
}

void CurlAsyncReader::route(const SiteRoute& route) {
    using Encryption = SiteRoute::Encryption;
    route_ = route;
    tls_ = route.encryption == Encryption::off        ? CurlSession::Tls::none
           : route.encryption == Encryption::required ? CurlSession::Tls::required
                                                      : CurlSession::Tls::verified;
    remark_.clear();
}

/// Where encryption is used when it is offered, nothing that comes of it ends a read: whoever could make it fail could
/// also have kept the offer away.
bool CurlAsyncReader::takesLess(const ReadFailure& failure) {
    using Tls = CurlSession::Tls;
    if (read_->bytes > 0 || tls_ == Tls::none || tls_ == Tls::required) return false;
    if (failure.kind == ReadFailure::Kind::notVouched && tls_ == Tls::verified) {
        tls_ = Tls::unverified;
        remark_ = "The session is encrypted, but nobody vouches for this server (" + failure.words + ").";
        return true;
    }
    // Of a login, whose data may not be had encrypted; later it would be another fault, and no reason to take less.
    const bool isDataLost =
        read_->isFolder && session_ && session_->isEncrypted() && failure.kind == ReadFailure::Kind::brokenOff;
    if (failure.kind != ReadFailure::Kind::notEncrypted && !isDataLost) return false;
    const bool hasAgreed = session_ && session_->isEncrypted();
    tls_ = Tls::none;
    remark_ = hasAgreed
                  ? "The server offers encryption that does not work (" + failure.words + "); the session goes without."
                  : "";
    return true;
}

void CurlAsyncReader::beginAgain() {
    session_.reset();
    try {
        begin();
    } catch (const std::exception& error) {
        onDone({ReadFailure::Kind::brokenOff, error.what()});
    }
}

void CurlAsyncReader::cancel(const std::optional<std::string>& propertyName) {
    if (read_ && (!propertyName || *propertyName == read_->propertyName)) drop();
}

void CurlAsyncReader::closeSession() {
    drop();
    session_.reset();
}

/// Ends what is read or waits to be reported; nothing of it is left.
void CurlAsyncReader::drop() {
    if (!read_) return;
    if (!read_->isOver) session_.reset();
    stopTimer();
    runtime_.forget(this);
    read_.reset();
}

void CurlAsyncReader::onData(std::string_view bytes) {
    lastSign_ = runtime_.tick();
    const auto size = static_cast<std::int64_t>(bytes.size());
    if (std::max(session_ ? session_->size() : 0, read_->bytes + size) > most_) {
        read_->fault = {ReadFailure::Kind::tooLong, "it is longer than " + byteCount(most_)};
        throw std::runtime_error(read_->fault.words);
    }
    read_->file->write(bytes);
    read_->bytes += size;
    if (std::exchange(read_->isProgressDue, true)) return;
    runtime_.post(this, [this] { reportProgress(); });
}

void CurlAsyncReader::onDone(const ReadFailure& failure) {
    constexpr std::string_view kEmptyFolder = "total 0\r\n";
    if (failure && !read_->fault && takesLess(failure)) {
        stopTimer();
        runtime_.post(this, [this] { beginAgain(); });  // not out of the session's own call
        return;
    }
    failure_ = read_->fault ? read_->fault : failure;
    read_->isOver = true;
    try {
        // A login that leads to an empty folder is a login: its listing must not look like no answer.
        if (!failure_ && read_->isFolder && read_->bytes == 0) onData(kEmptyFolder);
    } catch (const std::exception& error) {
        failure_ = {ReadFailure::Kind::storage, error.what()};
    }
    if (!failure_ && read_->bytes == 0) failure_ = {ReadFailure::Kind::refused, "the file is empty"};
    stopTimer();
    runtime_.post(this, [this] { reportCompletion(); });
}

void CurlAsyncReader::checkTime() {
    const auto now = runtime_.tick();
    if (now - lastSign_ >= static_cast<std::uint32_t>(limits_.silenceMs)) return giveUp("the server has fallen silent");
    if (session_ && session_->isTlsDue() && now - lastSign_ >= static_cast<std::uint32_t>(limits_.offerMs)) {
        const ReadFailure silence{ReadFailure::Kind::notEncrypted, "the server has fallen silent"};
        const bool goesOn = takesLess(silence);
        session_.reset();
        if (!goesOn) return onDone(silence);
        stopTimer();
        return runtime_.post(this, [this] { beginAgain(); });
    }
    if (now - read_->begun >= static_cast<std::uint32_t>(limits_.wholeMs)) giveUp("it took too long");
}

void CurlAsyncReader::giveUp(const std::string& words) {
    session_.reset();
    onDone({ReadFailure::Kind::brokenOff, words});
}

void CurlAsyncReader::stopTimer() {
    if (timer_) runtime_.stopTimer(*std::exchange(timer_, std::nullopt));
}

void CurlAsyncReader::reportProgress() {
    read_->isProgressDue = false;
    if (onProgress) onProgress({read_->bytes, session_ ? session_->size() : 0, read_->propertyName, {}});
}

void CurlAsyncReader::reportCompletion() {
    const auto file = std::move(read_->file);
    AsyncResult result{0, 0, read_->propertyName, {}};
    if (!failure_ && onComplete) {
        try {
            result.value = file->finish();
            result.bytesRead = read_->bytes;
            result.bytesMax = session_ ? session_->size() : 0;
        } catch (const std::exception& error) {
            failure_ = {ReadFailure::Kind::storage, error.what()};
        }
    }
    read_.reset();
    if (onComplete) onComplete(result);
}

}  // namespace corvane
