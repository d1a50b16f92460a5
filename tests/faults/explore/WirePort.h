#pragma once

#include "faults/explore/Wire.h"
#include "support/FakeSerialControl.h"

namespace corvane::faults {

/// A serial control at a wire. A blind one never reports unsent bytes, as pseudo-terminals and most adapters do. It
/// moves whole sendings where the fake control of the other tests moves bytes, which makes a run ten times as fast.
class WirePort : public fakes::FakeSerialControl {
public:
    WirePort(fakes::FakeRuntime& clock, Wire& wire, bool isBlind)
        : FakeSerialControl(clock), clock_(clock), wire_(wire), isBlind_(isBlind) {
        plug(1, wire);
    }

private:
    void send(const Bytes& bytes) override { wire_.hear(clock_.micros(), bytes, line().baudRate); }
    std::int32_t unsent() override { return isBlind_ ? 0 : wire_.unsent(clock_.micros()); }

    fakes::FakeRuntime& clock_;
    Wire& wire_;
    bool isBlind_;
};

}  // namespace corvane::faults
