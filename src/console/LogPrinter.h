#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/TextSink.h"
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

    /// Writes the file anew; false when it cannot be opened.
    [[nodiscard]] bool copyTo(const std::string& path);

    /// False when something could not be written to the file.
    bool isCopyWhole() const { return !copy_.is_open() || copy_.good(); }

    void text(std::string_view logged);
    void clear();
    void progress(std::int64_t value, std::int64_t maximum);
    void verdict(const Verdict& verdict);
    void result(int code);

private:
    void plain(const std::string& text);

    TextSink& out_;
    bool json_;
    PlainLog plain_;
    std::ofstream copy_;
};

}  // namespace corvane
