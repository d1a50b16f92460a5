#pragma once

#include <cstdint>
#include <string>

#include "protocol/DeviceSession.h"

namespace corvane {

/// Text replies, and waiting for silence.
class LineReader {
public:
    explicit LineReader(DeviceSession& session) : session_(session) {}

    /// Reads and drops whatever arrives until the port has been silent for 0.5 s.
    void wait_comm_empty();

    /// Collects a text reply into the session's receivedLine. Returns the byte that ended it: 13 for a non-empty line
    /// (what follows strEcho in it, when strEcho is not empty and occurs), 6 or 21 at once for ACK or NAK; 0 when
    /// dTimeout seconds pass in silence.
    std::uint8_t wait_comm(double dTimeout, const std::string& strEcho = {});

    /// Whether this byte stood behind the end of the last reply in what was read with it. All of that is dropped.
    bool cameAlong(std::uint8_t byte) const;

private:
    std::uint8_t take(std::uint8_t byte, const std::string& echo);

    DeviceSession& session_;
    Bytes rest_;
};

}  // namespace corvane
