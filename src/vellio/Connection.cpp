#include "vellio/Connection.h"

#include <utility>

namespace corvane::vellio {
namespace {

constexpr std::size_t kDataBuffer = 2048;
constexpr std::size_t kControlBuffer = 1024;  // a command frame has 257 bytes at most
constexpr int kMostReportsARound = 32;        // so that one call stays short while the device takes every report
constexpr int kMostFlushed = 4096;            // a device that never stops sending must not hold the program here

}  // namespace

Connection::Connection(EventQueue& events)
    : events_(events),
      data_(HidReportId::data, kDataBuffer, {Code::received, Code::readOverflow, Code::writeEmpty, Code::writeFull},
            events),
      control_(HidReportId::control, kControlBuffer,
               {Code::controlReceived, Code::controlReadOverflow, Code::controlWriteEmpty, Code::controlWriteFull},
               events) {}

void Connection::open(std::unique_ptr<HidDevice> device, const Device& identity, const std::string& text) {
    close();
    device_ = std::move(device);
    identity_ = identity;
    text_ = text;
    clearToSend_ = false;
    breakToTell_ = break_;  // a reader starts without one
    events_.add({Code::opened, identity_.number - 1, text_});
}

void Connection::close() {
    if (!device_) return;
    device_.reset();
    data_.clear();
    control_.clear();
    events_.add({Code::closed, identity_.number - 1, text_});
}

bool Connection::move() {
    if (!device_) return false;
    const bool news = receive();
    for (int i = 0; i < kMostReportsARound && sendOne(0); ++i) continue;
    return news;
}

void Connection::sendAll(int waitMs) {
    while (sendOne(waitMs)) continue;
}

bool Connection::receive() {
    news_ = false;
    for (int i = 0; i < inputBuffers_; ++i) {
        HidReport report{};
        const Moved moved = device_->read(report);
        if (moved == Moved::done) take(report);
        if (moved == Moved::notNow) break;
        if (moved == Moved::gone) {
            close();
            return true;
        }
    }
    return news_;
}

void Connection::take(const HidReport& report) {
    const auto content = hidContentOf(report);
    if (!content || content->bytes.empty()) return;
    news_ = true;
    if (content->id == HidReportId::data) data_.received(content->bytes);
    if (content->id == HidReportId::control) control_.received(content->bytes);
    if (content->id == HidReportId::line) {
        const bool on = (content->bytes[0] & 1) != 0;
        if (on != clearToSend_) events_.add({Code::clearToSend, on ? 1 : 0, {}});
        clearToSend_ = on;
    }
}

/// One report of what waits, the line state and commands first; False when nothing is left or it does not go now.
bool Connection::sendOne(int waitMs) {
    if (!device_) return false;
    if (breakToTell_) {
        const std::uint8_t state = break_ ? 1 : 0;
        if (!hand(hidReportOf({HidReportId::line, false, {state}}), waitMs)) return false;
        breakToTell_ = false;
        return true;
    }
    Channel* const first = control_.unsent() ? &control_ : &data_;
    const auto report = first->next();
    if (!report || !hand(*report, waitMs)) return false;
    first->sent();
    return true;
}

bool Connection::hand(const HidReport& report, int waitMs) {
    const Moved moved = device_->write(report, waitMs);
    if (moved == Moved::gone) close();
    return moved == Moved::done;
}

bool Connection::flush() {
    if (!device_) return false;
    for (int i = 0; i < kMostFlushed; ++i) {
        HidReport report{};
        const Moved moved = device_->read(report);
        if (moved == Moved::notNow) break;
        if (moved == Moved::gone) {
            close();
            return false;
        }
    }
    return true;
}

void Connection::breakState(bool on) {
    if (on == break_) return;
    break_ = on;
    breakToTell_ = device_ != nullptr;
}

bool Connection::setOutputReport(const HidReport& report, int waitMs) { return device_ && hand(report, waitMs); }

}  // namespace corvane::vellio
