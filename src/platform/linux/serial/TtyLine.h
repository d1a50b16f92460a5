#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/serial/LineSettings.h"

namespace corvane {

/// One tty, taken for this program alone while it is open, and the system's calls about it. Calls that can fail give
/// the system's number of the error, 0 for none.
class TtyLine {
public:
    TtyLine() = default;
    ~TtyLine() { close(); }
    TtyLine(const TtyLine&) = delete;
    TtyLine& operator=(const TtyLine&) = delete;

    /// Leaves the line raw and without old input; a failure leaves nothing open.
    OpenFailure open(const std::string& path);

    /// Drops what has not been sent, because the system would wait for it up to 30 s.
    void close();

    /// -1 while closed.
    int descriptor() const { return descriptor_; }

    /// Whether it is a pseudo-terminal, as far as one is open.
    bool isPseudo() const { return pseudo_; }

    /// All or nothing. A pseudo-terminal has 8 bits whatever is asked, so only a real line is asked what it has taken.
    std::uint32_t configure(const LineSetup& setup) const;
    std::uint32_t read(CommState& state) const;

    /// Lines that the device does not have (a pseudo-terminal's, mostly) are neither set nor ever on.
    void setControlLines(bool rts, bool dtr, bool driverOwnsRts) const;
    void setBreak(bool on) const;
    bool isOn(int modemBit) const;

    /// Bytes that the system has taken and not put on the line.
    int unsent() const;
    void discardInput() const;
    void discardOutput() const;

    /// Framing errors since the last call; 0 where nobody counts them.
    int newFramingErrors();

private:
    OpenFailure::Kind take(const std::string& path);
    void startCounting();

    int descriptor_ = -1;
    bool pseudo_ = false;
    std::optional<int> framingErrors_;
};

}  // namespace corvane
