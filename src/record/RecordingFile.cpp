#include "record/RecordingFile.h"

namespace corvane {
namespace {

constexpr std::size_t kWorthACall = 4096;

/// One of the many that a record brings with it.
bool isOfARecord(const RecordedEvent& event) {
    return event.what == "got" || event.what == "seen" || event.what == "unsent" ||
           (event.what == "sent" && event.bytes.starts_with(":"));
}

}  // namespace

std::string RecordingFile::begin(const std::string& start, const std::string& end) {
    file_.reset();
    if (!tape_.isOn()) return {};
    std::string path;
    file_ = files_.createOwn(start, end, path);
    if (!file_) return {};
    waiting_ = tape_.text();
    written_ = 0;
    write();
    tape_.onLine = [this](const RecordedEvent& event, std::string_view line) { take(event, line); };
    return path;
}

void RecordingFile::take(const RecordedEvent& event, std::string_view line) {
    if (!file_) return;
    waiting_ += line;
    if (!isOfARecord(event) || waiting_.size() >= kWorthACall) write();
}

void RecordingFile::write() {
    written_ += waiting_.size();
    file_->write(waiting_);
    waiting_.clear();
    if (written_ > kMost || !file_->failure().empty()) file_.reset();
}

}  // namespace corvane
