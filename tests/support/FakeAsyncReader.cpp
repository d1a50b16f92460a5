#include "support/FakeAsyncReader.h"

#include <filesystem>
#include <fstream>
#include <utility>

namespace corvane::fakes {

void FakeAsyncReader::start(const Address& address, const std::string& propertyName) {
    const auto target = "ftp://" + address.user + ":" + address.password + "@" + address.server() + address.path;
    calls.push_back("start " + target + " -> " + propertyName);
    ++generation_;
    reading_ = propertyName;
    failure_ = {};
    const auto found = answers.find(target);
    Answer answer = found == answers.end() ? Answer() : found->second;
    if (const auto fault = address.fault(); !fault.empty()) answer.failure = {ReadFailure::Kind::noAddress, fault};
    const auto size = static_cast<std::int64_t>(answer.content.size());
    for (int i = 1; size > 0 && i <= answer.reports; ++i) {
        const AsyncResult result{size * i / answer.reports, answer.isSizeKnown ? size : 0, propertyName, {}};
        plan(answer.ms * i / answer.reports, [this, result] {
            if (onProgress) onProgress(result);
        });
    }
    if (answer.ends) plan(answer.ms, [this, answer, propertyName] { complete(answer, propertyName); });
}

void FakeAsyncReader::plan(int ms, std::function<void()> report) {
    runtime_.at(runtime_.ms() + ms, [this, generation = generation_, report = std::move(report)] {
        if (generation == generation_ && reading_) report();
    });
}

void FakeAsyncReader::complete(const Answer& answer, const std::string& propertyName) {
    reading_.reset();
    AsyncResult result{0, 0, propertyName, {}};
    const bool isTooLong = static_cast<std::int64_t>(answer.content.size()) > most;
    if (!isTooLong && !answer.content.empty() && onComplete) result.value = store(answer.content, propertyName);
    if (result.value.empty()) {
        failure_ = isTooLong
                       ? ReadFailure{ReadFailure::Kind::tooLong, "it is longer than " + std::to_string(most) + " bytes"}
                       : answer.failure;
    } else {
        result.bytesRead = static_cast<std::int64_t>(answer.content.size());
        result.bytesMax = answer.isSizeKnown ? result.bytesRead : 0;
    }
    if (onComplete) onComplete(result);
    if (onDelivered && result.bytesRead > 0) onDelivered(propertyName);
}

/// Empty when the folder is not there.
std::string FakeAsyncReader::store(const std::string& content, const std::string& propertyName) {
    namespace fs = std::filesystem;
    const auto folder = propertyName.empty() ? fs::temp_directory_path() : fs::path(propertyName).parent_path();
    const auto path = (folder / (".fake-read-" + std::to_string(++files_))).string();
    std::ofstream file(path, std::ios::binary);
    file << content;
    return file.flush() ? path : std::string();
}

void FakeAsyncReader::cancel(const std::optional<std::string>& propertyName) {
    calls.push_back("cancel " + propertyName.value_or("*"));
    if (!propertyName || propertyName == reading_) reading_.reset();
}

void FakeAsyncReader::closeSession() {
    calls.emplace_back("close");
    reading_.reset();
}

}  // namespace corvane::fakes
