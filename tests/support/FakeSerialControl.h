#pragma once

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>

#include "models/Peer.h"
#include "platform/serial/BufferedSerialControl.h"
#include "support/FakeRuntime.h"

namespace corvane::fakes {

/// The serial control in virtual time, with simulated devices at its ports. Output reaches the device byte by byte at
/// the line's rate; what the device says lands in the receive buffer when it says it. A port without a device does not
/// exist.
class FakeSerialControl : public BufferedSerialControl, private TimedSource {
public:
    explicit FakeSerialControl(FakeRuntime& runtime) : BufferedSerialControl(runtime), clock_(runtime) {
        clock_.attach(*this);
    }
    ~FakeSerialControl() override { clock_.detach(*this); }

    /// A device, not owned, at COM<number>. One that says that it is not plugged is lost, and cannot be opened.
    void plug(std::int16_t number, models::Peer& peer) { peers_[number] = &peer; }

    /// COM<number> exists and another program has it; or may not be opened by this user.
    void markBusy(std::int16_t number, bool busy = true) {
        busy_.erase(number);
        if (busy) busy_.insert(number);
    }
    void markForbidden(std::int16_t number) { forbidden_.insert(number); }

    /// Settings for which the function is True are more than the line can do.
    void refuse(std::function<bool(const CommState&)> isRefused) { isRefused_ = std::move(isRefused); }

    /// A byte has come in with a wrong stop bit.
    void raiseFramingError() { raise(kFramingError); }

    /// Bytes that nobody hears go out behind what is queued.
    void addUnsent(int bytes) {
        while (bytes-- > 0) enqueue({0, false});
    }

    void hold(bool carrier, bool clearToSend, bool dataSetReady) { inputs_ = {carrier, clearToSend, dataSetReady}; }
    void message(std::uint32_t code, std::string text) { messages_[code] = std::move(text); }

    /// Every setting of the line since the start, those at openings and refused ones too.
    const std::vector<CommState>& lineChanges() const { return lineChanges_; }

    CommState line() const { return line_; }
    std::int32_t CommID() override { return PortOpen() ? handle_ : -1; }
    std::string FormatMessage(std::uint32_t code) const override {
        return messages_.count(code) ? messages_.at(code) : std::string();
    }

private:
    struct Queued {
        std::uint8_t byte;
        bool heard;
    };

    OpenFailure openLine() override {
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
    void closeLine() override {
        peer_ = nullptr;
        queue_.clear();
    }
    std::uint32_t readLine(CommState& state) override {
        state = line_;
        return 0;
    }
    std::uint32_t writeLine(const CommState& state) override {
        const bool impossible = state.baudRate == 0 || state.dataBits < 5 || state.dataBits > 8 || state.parity > 4 ||
                                state.stopBits > 2 ||
                                (state.stopBits == 1) != (state.stopBits > 0 && state.dataBits == 5);
        const bool taken = !impossible && !(isRefused_ && isRefused_(state));
        lineChanges_.push_back(state);
        if (!taken) return EINVAL;
        line_ = state;
        return 0;
    }
    void applyControlLines() override {}
    void applyHandShaking() override {}
    void applyBreak() override {}
    bool isHolding(LineInput input) override { return inputs_[static_cast<std::size_t>(input)]; }
    void send(const Bytes& bytes) override {
        if (!peer_->isPlugged()) return lineLost();
        for (const auto byte : bytes) enqueue({byte, true});
    }
    std::int32_t unsent() override { return static_cast<std::int32_t>(queue_.size()); }
    void discardUnsent() override { queue_.clear(); }
    void discardUnread() override { peer_->speak(clock_.micros()); }
    std::optional<Micros> nextAt() const override {
        if (!peer_) return std::nullopt;
        if (!peer_->isPlugged()) return clock_.micros();
        auto next = peer_->nextAt();
        if (!queue_.empty()) {
            const Micros leaves = (firstLeavesAt_ + 999) / 1000;
            next = next ? std::min(*next, leaves) : leaves;
        }
        return next;
    }
    void act(Micros now) override {
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
    bool hasNews() const override { return news_; }

    void enqueue(Queued item) {
        if (queue_.empty()) firstLeavesAt_ = clock_.micros() * 1000 + nanosPerByte();
        queue_.push_back(item);
    }
    std::int64_t nanosPerByte() const {
        const std::int64_t halfBits = 2 * (1 + line_.dataBits + (line_.parity ? 1 : 0)) + 2 + line_.stopBits;
        return halfBits * 500000000 / line_.baudRate;
    }
    void moveQueue(Micros now) {
        while (peer_ && !queue_.empty() && firstLeavesAt_ <= now * 1000) {
            const auto first = queue_.front();
            queue_.pop_front();
            sent(unsent() + 1, unsent());
            firstLeavesAt_ += nanosPerByte();
            if (first.heard) peer_->hear(now, {first.byte}, line_.baudRate);
        }
    }

    FakeRuntime& clock_;
    std::map<std::int16_t, models::Peer*> peers_;
    std::set<std::int16_t> busy_, forbidden_;
    std::function<bool(const CommState&)> isRefused_;
    std::map<std::uint32_t, std::string> messages_;
    std::vector<bool> inputs_ = {false, false, false};
    models::Peer* peer_ = nullptr;  // of the open port
    std::int32_t handle_ = 0;
    CommState line_;
    std::deque<Queued> queue_;
    std::int64_t firstLeavesAt_ = 0;  // in nanoseconds
    bool news_ = false;
    std::vector<CommState> lineChanges_;
};

}  // namespace corvane::fakes
