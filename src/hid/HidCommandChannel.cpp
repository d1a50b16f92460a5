#include "hid/HidCommandChannel.h"

#include "text/RuntimeError.h"

namespace corvane {
namespace {

constexpr std::int32_t kReplyTime = 1000;  // ms until the first byte of a reply
constexpr std::int32_t kPieceTime = 150;   // ms between its pieces
constexpr std::size_t kMostParameters = 255;
constexpr std::size_t kStatusSize = 2;
constexpr std::uint8_t kAck = 6;
constexpr std::uint8_t kNak = 21;
constexpr std::uint8_t kUnknownCommand = 4;

/// Leaves with the old state however the call ends.
template <typename Value>
class Restored {
public:
    Restored(Value& place, Value during) : place_(place), before_(place) { place = during; }
    ~Restored() { place_ = before_; }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

private:
    Value& place_;
    Value before_;
};

}  // namespace

bool HidCommandChannel::SendHIDCMD(std::uint8_t bCmd, const Bytes& bParams, Bytes& bResults) {
    const Restored nested(nesting_, static_cast<std::int16_t>(nesting_ + 1));
    // The caller may give one array for both, so the frame is made before the results are emptied.
    const bool isTooLong = bParams.size() > kMostParameters;
    Bytes frame{bCmd, static_cast<std::uint8_t>(bParams.size())};
    frame.insert(frame.end(), bParams.begin(), bParams.end());
    bResults.clear();
    if (!canStart()) return false;
    if (isTooLong) throw RuntimeError::overflow();
    return run(Kind::command, frame, bResults);
}

bool HidCommandChannel::SendHIDRawCmd(const Bytes& bRawCmds, Bytes& bResults) {
    const Restored nested(nesting_, static_cast<std::int16_t>(nesting_ + 1));
    const Bytes frame(bRawCmds.begin(), bRawCmds.end());
    bResults.clear();
    return canStart() && run(Kind::raw, frame, bResults);
}

bool HidCommandChannel::canStart() { return session_.isOpen() && !busy_ && enabled_; }

bool HidCommandChannel::run(Kind kind, const Bytes& frame, Bytes& bResults) {
    const Restored exchanging(busy_, true);
    if (kind == Kind::command) notSupported_ = false;
    nakSeen_ = false;
    auto& library = session_.library;
    library.discardReadCtrlBuffer(session_.handle);
    session_.tell("command", frame);
    if (!library.writeCtrl(session_.handle, frame.data(), static_cast<std::int32_t>(frame.size()), 0, 0)) return false;
    timer().Timeout(kReplyTime);
    cancel_ = false;
    Reply reply;
    while (!timer().IsTimeout() && !cancel_) {
        const auto next = turn(reply, kind, bResults);
        if (next == Turn::stop) break;
        if (next == Turn::wait) runtime_.WaitActivity(1);
        runtime_.DoEvents();
    }
    return reply.result;
}

HidCommandChannel::Turn HidCommandChannel::turn(Reply& reply, Kind kind, Bytes& bResults) {
    const std::int32_t waiting = session_.library.bytesToReadCtrl(session_.handle);
    if (waiting <= 0) return Turn::wait;
    // Only a new piece earns new time: an unfinished reply that stays as it is must not keep the exchange alive.
    if (waiting != reply.seen) timer().Timeout(kPieceTime);
    reply.seen = waiting;
    const std::int32_t needed = reply.statusRead ? reply.length : static_cast<std::int32_t>(kStatusSize);
    if (waiting < needed) return Turn::wait;
    return reply.statusRead ? readResults(reply, kind, bResults) : readStatus(reply);
}

HidCommandChannel::Turn HidCommandChannel::readStatus(Reply& reply) {
    std::uint8_t packet[kStatusSize] = {};
    const auto count = session_.library.readCtrl(session_.handle, packet, kStatusSize, 0, 0);
    if (count != static_cast<std::int32_t>(kStatusSize)) return Turn::wait;
    session_.tell("reply", {packet, packet + kStatusSize});
    reply.statusRead = true;
    reply.seen = 0;
    reply.status = packet[0];
    reply.length = packet[1];
    if (reply.status == kAck) reply.result = true;
    if (reply.status == kNak) {
        nakSeen_ = true;
        reply.result = false;
    }
    return reply.length == 0 ? Turn::stop : Turn::again;
}

HidCommandChannel::Turn HidCommandChannel::readResults(Reply& reply, Kind kind, Bytes& bResults) {
    bResults.assign(static_cast<std::size_t>(reply.length), 0);
    const auto count = session_.library.readCtrl(session_.handle, bResults.data(), reply.length, 0, 0);
    if (count < reply.length) {
        bResults.clear();
        return Turn::wait;
    }
    session_.tell("reply", bResults);
    if (kind == Kind::command && reply.status == kNak && bResults[0] == kUnknownCommand) notSupported_ = true;
    return Turn::stop;
}

clsTimeout& HidCommandChannel::timer() {
    if (!timer_) timer_.emplace(runtime_);
    return *timer_;
}

}  // namespace corvane
