#include "support/FakeSerialControl.h"

#include <algorithm>
#include <cerrno>

namespace corvane::fakes {

FakeSerialControl::FakeSerialControl(FakeRuntime& runtime) : BufferedSerialControl(runtime), clock_(runtime) {
    clock_.attach(*this);
}

FakeSerialControl::~FakeSerialControl() { clock_.detach(*this); }

void FakeSerialControl::markBusy(std::int16_t number, bool busy) {
    busy_.erase(number);
    if (busy) busy_.insert(number);
}

OpenFailure FakeSerialControl::openLine() {
    using Kind = OpenFailure::Kind;
    const auto number = CommPort();
    const std::string path = "/dev/fake" + std::to_string(number);
    if (busy_.count(number)) return {Kind::inUse, path, EBUSY};
    if (forbidden_.count(number)) return {Kind::noPermission, path, EACCES};
    const auto found = peers_.find(number);
    if (found != peers_.end()) found->second->speak(clock_.micros());  // nobody heard what it said before
    if (found == peers_.end() || !found->second->isPlugged()) return {Kind::notThere, path, ENOENT};
    peer_ = found->second;
    ++handle_;
    return {Kind::none, path, 0};
}

void FakeSerialControl::closeLine() {
    peer_ = nullptr;
    queue_.clear();
}

std::uint32_t FakeSerialControl::readLine(CommState& state) {
    state = line_;
    return 0;
}

std::uint32_t FakeSerialControl::writeLine(const CommState& state) {
    const bool impossible = state.baudRate == 0 || state.dataBits < 5 || state.dataBits > 8 || state.parity > 4 ||
                            state.stopBits > 2 || (state.stopBits == 1) != (state.stopBits > 0 && state.dataBits == 5);
    const bool taken = !impossible && !(isRefused_ && isRefused_(state));
    lineChanges_.push_back(state);
    if (!taken) return EINVAL;
    line_ = state;
    return 0;
}

std::string FakeSerialControl::FormatMessage(std::uint32_t code) const {
    const auto found = messages_.find(code);
    return found == messages_.end() ? std::string() : found->second;
}

std::int64_t FakeSerialControl::nanosPerByte() const {
    const std::int64_t halfBits = 2 * (1 + line_.dataBits + (line_.parity ? 1 : 0)) + 2 + line_.stopBits;
    return halfBits * 500000000 / line_.baudRate;
}

void FakeSerialControl::enqueue(Queued item) {
    if (queue_.empty()) firstLeavesAt_ = clock_.micros() * 1000 + nanosPerByte();
    queue_.push_back(item);
}

void FakeSerialControl::send(const Bytes& bytes) {
    if (!peer_->isPlugged()) return lineLost();
    for (const auto byte : bytes) enqueue({byte, true});
}

std::optional<Micros> FakeSerialControl::nextAt() const {
    if (!peer_) return std::nullopt;
    if (!peer_->isPlugged()) return clock_.micros();
    auto next = peer_->nextAt();
    if (!queue_.empty()) {
        const Micros leaves = (firstLeavesAt_ + 999) / 1000;
        next = next ? std::min(*next, leaves) : leaves;
    }
    return next;
}

void FakeSerialControl::moveQueue(Micros now) {
    while (peer_ && !queue_.empty() && firstLeavesAt_ <= now * 1000) {
        const auto first = queue_.front();
        queue_.pop_front();
        sent(unsent() + 1, unsent());
        firstLeavesAt_ += nanosPerByte();
        if (first.heard) peer_->hear(now, {first.byte}, line_.baudRate);
    }
}

void FakeSerialControl::act(Micros now) {
    moveQueue(now);
    const Bytes said = peer_->speak(now);
    const bool plugged = peer_->isPlugged();
    news_ = !said.empty() || !plugged;
    if (!plugged) {
        lineLost();
    } else {
        received(said.data(), said.size());
    }
}

}  // namespace corvane::fakes
