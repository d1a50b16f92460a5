#include "record/RecordedReader.h"

namespace corvane {
namespace {

constexpr char kSite[] = "site";

}  // namespace

RecordedReader::RecordedReader(AsyncReader& reader, Tape& tape) : reader_(reader), tape_(tape) {
    reader_.onProgress = [this](const AsyncResult& result) {
        if (onProgress) onProgress(result);
    };
    reader_.onComplete = [this](const AsyncResult& result) {
        const auto failure = reader_.failure();
        tape_.note("fetched", kSite, std::to_string(result.bytesRead) + (failure ? " " + failure.words : ""));
        if (onComplete) onComplete(result);
    };
}

RecordedReader::~RecordedReader() { reader_.onProgress = reader_.onComplete = nullptr; }

void RecordedReader::start(const Address& address, const std::string& propertyName) {
    tape_.keepSecret(address.password);
    tape_.note("fetch", kSite, "ftp://" + address.server() + address.path);
    reader_.start(address, propertyName);
}

void RecordedReader::cancel(const std::optional<std::string>& propertyName) {
    tape_.note("cancel", kSite);
    reader_.cancel(propertyName);
}

void RecordedReader::closeSession() {
    tape_.note("leave", kSite);
    reader_.closeSession();
}

}  // namespace corvane
