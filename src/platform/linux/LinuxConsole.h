#pragma once

#include <functional>
#include <string>

#include "platform/Terminal.h"
#include "platform/TextSink.h"
#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// Standard output or standard error. A reader that stops reading must not stop a device half way, so text is written
/// only as fast as it is taken; finish waits for the rest at the end of the program.
class StandardStream : public TextSink {
public:
    explicit StandardStream(int descriptor);
    static StandardStream output();
    static StandardStream error();

    void write(std::string_view utf8) override;
    bool isTerminal() const override { return isTerminal_; }

    /// Writes what is taken now, without waiting.
    void flush() { drain(0); }

    /// Waits until everything is written or nobody reads any more.
    void finish() { drain(-1); }

    /// Why something could not be written, in words; empty when all was, or when the reader went away.
    std::string failure() const;

private:
    void drain(int waitMs);

    int descriptor_;
    bool isTerminal_;
    bool isBroken_ = false;
    int error_ = 0;  // of the system, for that
    std::string pending_;
};

/// Standard input as a terminal.
class LinuxTerminal : public Terminal {
public:
    explicit LinuxTerminal(LinuxRuntime& runtime) : runtime_(runtime) {}
    bool isThere() const override;
    std::optional<std::string> readLine(bool echo, const std::function<bool()>& isAbandoned) override;

private:
    LinuxRuntime& runtime_;
    std::string typed_;  // beyond the line that was asked for
};

}  // namespace corvane
