#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/AsyncReader.h"
#include "platform/Runtime.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes {

/// What a reader reports, and the loop that waits for it.
class ReadLog {
public:
    ReadLog(AsyncReader& reader, Runtime& runtime) : reader_(reader), runtime_(runtime) {
        reader_.onProgress = [this](const AsyncResult& result) { progress.push_back(result); };
        reader_.onComplete = [this](const AsyncResult& result) { completed.push_back(result); };
    }
    ~ReadLog() {
        reader_.onProgress = nullptr;
        reader_.onComplete = nullptr;
        clear();
    }
    ReadLog(const ReadLog&) = delete;
    ReadLog& operator=(const ReadLog&) = delete;

    std::vector<AsyncResult> progress, completed;

    /// Forgets all reports, and removes the files that nobody has taken.
    void clear() {
        for (const auto& result : completed) remove(result);
        progress.clear();
        completed.clear();
    }

    void round() {
        runtime_.WaitActivity(10);
        runtime_.DoEvents();
    }

    /// Until the read has begun to bring bytes, or nothing of the kind happened for ten seconds.
    bool waitForProgress() {
        return waitUntil([this] { return !progress.empty(); });
    }

    /// A whole read; its completion, or one of -1 bytes when none came in ten seconds.
    AsyncResult read(const Address& address, const std::string& property = {}) {
        clear();
        reader_.start(address, property);
        waitUntil([this] { return !completed.empty(); });
        return completed.empty() ? AsyncResult{-1, 0, {}, {}} : completed.front();
    }

    /// The content that a completion brought, or "(none)"; the file is removed.
    static std::string taken(const AsyncResult& result) {
        if (result.value.empty()) return "(none)";
        auto content = ScratchFolder::content(result.value);
        remove(result);
        return content;
    }

private:
    template <class Condition>
    bool waitUntil(Condition condition) {
        const auto start = runtime_.tick();
        while (!condition() && runtime_.tick() - start < 10000) round();
        return condition();
    }

    static void remove(const AsyncResult& result) {
        std::error_code ignored;
        if (!result.value.empty()) std::filesystem::remove(result.value, ignored);
    }

    AsyncReader& reader_;
    Runtime& runtime_;
};

/// 3000 bytes in which every value occurs.
inline std::string everyByte() {
    std::string bytes;
    for (int i = 0; i < 3000; ++i) bytes += static_cast<char>(i);
    return bytes;
}

}  // namespace corvane::fakes
