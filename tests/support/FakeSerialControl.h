#pragma once

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
    explicit FakeSerialControl(FakeRuntime& runtime);
    ~FakeSerialControl() override;

    /// A device, not owned, at COM<number>. One that says that it is not plugged is lost, and cannot be opened.
    void plug(std::int16_t number, models::Peer& peer) { peers_[number] = &peer; }

    /// COM<number> exists and another program has it; or may not be opened by this user.
    void markBusy(std::int16_t number, bool busy = true);
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
    std::string FormatMessage(std::uint32_t code) const override;

private:
    struct Queued {
        std::uint8_t byte;
        bool heard;
    };

    OpenFailure openLine() override;
    void closeLine() override;
    std::uint32_t readLine(CommState& state) override;
    std::uint32_t writeLine(const CommState& state) override;
    void applyControlLines() override {}
    void applyHandShaking() override {}
    void applyBreak() override {}
    bool isHolding(LineInput input) override { return inputs_[static_cast<std::size_t>(input)]; }
    void send(const Bytes& bytes) override;
    std::int32_t unsent() override { return static_cast<std::int32_t>(queue_.size()); }
    void discardUnsent() override { queue_.clear(); }
    void discardUnread() override { peer_->speak(clock_.micros()); }
    std::optional<Micros> nextAt() const override;
    void act(Micros now) override;
    bool hasNews() const override { return news_; }

    void enqueue(Queued item);
    std::int64_t nanosPerByte() const;
    void moveQueue(Micros now);

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
