#include "platform/linux/transfer/CurlAsyncReader.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace corvane {
namespace {

constexpr int kLongestSilenceCheck = 1000;  // ms between two looks

}  // namespace

CurlAsyncReader::CurlAsyncReader(LinuxRuntime& runtime, const Limits& limits) : runtime_(runtime), limits_(limits) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
}

CurlAsyncReader::~CurlAsyncReader() {
    drop();
    session_.reset();
    curl_global_cleanup();
}

void CurlAsyncReader::start(const std::string& target, const std::string& propertyName) {
    drop();
    problem_.clear();
    read_ = std::make_unique<Read>();
    read_->propertyName = propertyName;
    try {
        begin(target);
    } catch (const std::exception& error) {
        onDone(error.what());
    }
}

void CurlAsyncReader::begin(const std::string& target) {
    const auto address = FtpAddress::parse(target);
    if (!address) throw std::runtime_error("This address cannot be read");
    read_->isFolder = address->isFolder();
    read_->file = std::make_unique<DownloadFile>(read_->propertyName);
    openSession(*address);
    session_->begin(*address);
    lastSign_ = runtime_.tick();
    silenceTimer_ =
        runtime_.startTimer(std::clamp(limits_.silenceMs / 2, 1, kLongestSilenceCheck), [this] { checkSilence(); });
}

void CurlAsyncReader::openSession(const FtpAddress& address) {
    if (session_ && session_->isFor(address) && session_->isOpen()) return;
    session_.reset();
    session_ = std::make_unique<CurlSession>(runtime_, address, route_, limits_.connectMs);
    session_->onData = [this](std::string_view bytes) { onData(bytes); };
    session_->onReply = [this] { lastSign_ = runtime_.tick(); };
    session_->onDone = [this](const std::string& problem) { onDone(problem); };
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
    stopSilenceTimer();
    runtime_.forget(this);
    read_.reset();
}

void CurlAsyncReader::onData(std::string_view bytes) {
    lastSign_ = runtime_.tick();
    read_->file->write(bytes);
    read_->bytes += static_cast<std::int64_t>(bytes.size());
    if (std::exchange(read_->isProgressDue, true)) return;
    runtime_.post(this, [this] { reportProgress(); });
}

void CurlAsyncReader::onDone(const std::string& problem) {
    constexpr std::string_view kEmptyFolder = "total 0\r\n";
    problem_ = problem;
    read_->isOver = true;
    try {
        // A login that leads to an empty folder is a login: its listing must not look like no answer.
        if (problem_.empty() && read_->isFolder && read_->bytes == 0) onData(kEmptyFolder);
    } catch (const std::exception& error) {
        problem_ = error.what();
    }
    if (problem_.empty() && read_->bytes == 0) problem_ = "The file is empty";
    stopSilenceTimer();
    runtime_.post(this, [this] { reportCompletion(); });
}

void CurlAsyncReader::checkSilence() {
    if (runtime_.tick() - lastSign_ < static_cast<std::uint32_t>(limits_.silenceMs)) return;
    session_.reset();
    onDone("The server has fallen silent");
}

void CurlAsyncReader::stopSilenceTimer() {
    if (silenceTimer_) runtime_.stopTimer(*std::exchange(silenceTimer_, std::nullopt));
}

void CurlAsyncReader::reportProgress() {
    read_->isProgressDue = false;
    if (onProgress) onProgress({read_->bytes, session_ ? session_->size() : 0, read_->propertyName, {}});
}

void CurlAsyncReader::reportCompletion() {
    const auto file = std::move(read_->file);
    AsyncResult result{0, 0, read_->propertyName, {}};
    if (problem_.empty() && onComplete) {
        try {
            result.value = file->finish();
            result.bytesRead = read_->bytes;
            result.bytesMax = session_ ? session_->size() : 0;
        } catch (const std::exception& error) {
            problem_ = error.what();
        }
    }
    read_.reset();
    if (onComplete) onComplete(result);
}

}  // namespace corvane
