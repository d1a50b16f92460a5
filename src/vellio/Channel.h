#pragma once

#include <deque>

#include "vellio/ByteQueue.h"
#include "vellio/EventQueue.h"
#include "vellio/HidBackend.h"

namespace corvane::vellio {

/// One of the two byte channels of an open device: what has come in, what is to go out, and the events about both.
class Channel {
public:
    struct Codes {
        Code received, readOverflow, writeEmpty, writeFull;
    };

    Channel(HidReportId id, std::size_t size, Codes codes, EventQueue& events)
        : id_(id), codes_(codes), in_(size), out_(size), events_(events) {}

    // The program's side.

    /// Queues bytes of the stream; the number that fitted.
    std::size_t write(const std::uint8_t* bytes, std::size_t count);

    /// Queues a message whose end the reader is told; all of it or nothing.
    bool writeMessage(const std::uint8_t* bytes, std::size_t count);

    std::size_t read(std::uint8_t* to, std::size_t count);
    std::size_t waiting() const { return in_.size(); }
    std::size_t unsent() const { return out_.size(); }
    void discardRead() { in_.clear(); }
    void discardWrite();
    void clear();

    std::size_t readSize() const { return in_.limit(); }
    std::size_t writeSize() const { return out_.limit(); }
    void readSize(std::size_t size);
    void writeSize(std::size_t size);

    // The device's side.

    std::optional<HidReport> next() const;
    void sent();
    void received(const Bytes& bytes);

private:
    std::size_t nextCount() const;
    void raise(Code code, std::size_t parameter) { events_.add({code, static_cast<std::int32_t>(parameter), {}}); }

    HidReportId id_;
    Codes codes_;
    ByteQueue in_;
    ByteQueue out_;
    std::deque<std::size_t> messages_;  // what is left of each message in out_; none for a stream
    bool begun_ = false;                // a part of the first message has gone out
    EventQueue& events_;
};

}  // namespace corvane::vellio
