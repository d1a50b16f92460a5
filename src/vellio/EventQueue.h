#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace corvane::vellio {

/// The event codes of vellio.h.
enum class Code : std::int32_t {
    none = -1,
    received = 0,
    readOverflow = 1,
    writeEmpty = 2,
    writeFull = 3,
    controlReceived = 4,
    controlReadOverflow = 5,
    controlWriteEmpty = 6,
    controlWriteFull = 7,
    opened = 8,
    closed = 9,
    plugged = 16,
    unplugged = 17,
    listed = 18,
    clearToSend = 35
};

struct Event {
    Code code = Code::none;
    std::int32_t parameter = 0;
    std::string text;

    bool isOfDevice() const { return code >= Code::opened && code <= Code::listed; }

    /// Its parameter counts bytes that were lost.
    bool isOfLoss() const {
        return code == Code::readOverflow || code == Code::writeFull || code == Code::controlReadOverflow ||
               code == Code::controlWriteFull;
    }
};

/// Events that wait for delivery. A program that never asks for them does not make it grow: an event of the streams
/// that waits already takes over the newer parameter (lost bytes are added up), and of too many device events the
/// oldest go.
class EventQueue {
public:
    void add(Event event);
    std::optional<Event> take();
    std::optional<Event> takeOfDevice();  ///< the oldest event of a device
    std::size_t size() const { return events_.size(); }

private:
    std::deque<Event> events_;
};

}  // namespace corvane::vellio
