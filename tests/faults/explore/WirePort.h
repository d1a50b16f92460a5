#pragma once

#include "faults/explore/Wire.h"
#include "platform/serial/BufferedSerialControl.h"
#include "support/FakeRuntime.h"

namespace corvane::faults {

/// A serial control at a wire. A blind one never reports unsent bytes, as pseudo-terminals and most adapters do. It
/// moves whole sendings where the fake control of the other tests moves bytes, which makes a run ten times as fast.
class WirePort : public BufferedSerialControl, private fakes::TimedSource {
public:
    WirePort(fakes::FakeRuntime& clock, Wire& wire, bool isBlind)
        : BufferedSerialControl(clock), clock_(clock), wire_(wire), isBlind_(isBlind) {
        clock_.attach(*this);
    }
    ~WirePort() override { clock_.detach(*this); }

    std::int32_t CommID() override { return PortOpen() ? 1 : -1; }
    std::string FormatMessage(std::uint32_t) const override { return {}; }

private:
    OpenFailure openLine() override {
        discardUnread();
        isOpen_ = true;
        return {};
    }
    void closeLine() override { isOpen_ = false; }
    std::uint32_t readLine(CommState& state) override {
        state = line_;
        return 0;
    }
    std::uint32_t writeLine(const CommState& state) override {
        line_ = state;
        return 0;
    }
    void applyControlLines() override {}
    void applyHandShaking() override {}
    void applyBreak() override {}
    bool isHolding(LineInput) override { return false; }
    void send(const Bytes& bytes) override { wire_.hear(clock_.micros(), bytes, line_.baudRate); }
    std::int32_t unsent() override { return isBlind_ ? 0 : wire_.unsent(clock_.micros()); }
    void discardUnsent() override {}
    void discardUnread() override { wire_.speak(clock_.micros()); }

    std::optional<Micros> nextAt() const override { return isOpen_ ? wire_.nextAt() : std::nullopt; }
    void act(Micros now) override {
        const auto said = wire_.speak(now);
        news_ = !said.empty();
        received(said.data(), said.size());
    }
    bool hasNews() const override { return news_; }

    fakes::FakeRuntime& clock_;
    Wire& wire_;
    bool isBlind_;
    bool isOpen_ = false, news_ = false;
    CommState line_;
};

}  // namespace corvane::faults
