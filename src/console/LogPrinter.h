#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/TextSink.h"
#include "platform/files/FileStore.h"
#include "run/Verdict.h"

namespace corvane {

/// A log as plain text: UTF-8, line ends as LF, clearing the pane ends the line at hand.
class PlainLog {
public:
    std::string text(std::string_view logged);
    std::string clearing();

private:
    bool isLineOpen_ = false;
};

/// Standard output of a run, plain or as one JSON object a line, and a copy of the plain log in a file.
class LogPrinter {
public:
    LogPrinter(TextSink& out, bool json) : out_(out), json_(json) {}

    /// Copies the log into the file from here on.
    void copyTo(std::unique_ptr<OutputFile> file) { copy_ = std::move(file); }

    /// Why the copy is not whole, in words; empty when it is, or when there is none.
    std::string copyFailure() const { return copy_ ? copy_->failure() : std::string(); }

    void text(std::string_view logged);
    void clear();
    void progress(std::int64_t value, std::int64_t maximum);

    /// Between two devices: for the "removal" of one, or for the next "device".
    void waiting(const char* what);
    void verdict(const Verdict& verdict);
    void result(int code);

private:
    void plain(const std::string& text);

    TextSink& out_;
    bool json_;
    PlainLog plain_;
    std::unique_ptr<OutputFile> copy_;
};

}  // namespace corvane
