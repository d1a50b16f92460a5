#pragma once

#include <gtest/gtest.h>

#include "support/SerialBench.h"
#include "support/hid/HidBench.h"

namespace corvane::fakes {

enum class PortKind { serial, hid };

/// Virtual time and one port object of either kind, with simulated devices at its ports: the same dialogue with a
/// device is tested over both. Ports are numbered from 1, COM1 or HID1. Opening a HID port takes 150 ms and some
/// commands, so tests count their times from where they start.
class PortBench {
    std::unique_ptr<SerialBench> serial_;
    std::unique_ptr<HidBench> hid_;
    models::Device nobody_{{}};
    std::map<std::int16_t, std::unique_ptr<SimulatedReader>> readers_;

public:
    explicit PortBench(PortKind kind)
        : serial_(kind == PortKind::serial ? std::make_unique<SerialBench>() : nullptr),
          hid_(serial_ ? nullptr : std::make_unique<HidBench>()) {}

    FakeRuntime& runtime{serial_ ? serial_->runtime : hid_->runtime};
    clsIMScomm& port{serial_ ? static_cast<clsIMScomm&>(serial_->port) : hid_->port};

    std::string name(std::int16_t number) const { return (serial_ ? "COM" : "HID") + std::to_string(number); }

    /// A device, not owned, at that port, in place of the one that was there. Readers come in the order of their
    /// numbers.
    void plug(std::int16_t number, models::Peer& device) {
        unplug(number);
        if (serial_) return serial_->plug(number, device);
        readers_[number] = std::make_unique<SimulatedReader>(runtime, device);
        readers_[number]->plug(hid_->bus, name(number));
        port.NumberOfCommPorts();
    }

    void unplugAll() {
        if (serial_) serial_->map.entries.clear();
        while (!readers_.empty()) unplug(readers_.begin()->first);
    }

    /// The port is listed, and does not open.
    void refuse(std::int16_t number) {
        plug(number, nobody_);
        if (serial_) return serial_->control.markBusy(number);
        hid_->bus.forbid(name(number));
    }

    /// Plugs the device in at the first port and opens that.
    void open(models::Peer& device, const std::string& settings = "19200,N,8,1") {
        plug(1, device);
        port.CommPort(name(1));
        port.Settings(settings);
        port.PortOpen(true);
    }

private:
    void unplug(std::int16_t number) {
        if (serial_) {
            std::erase_if(serial_->map.entries, [&](const auto& entry) { return entry.port == name(number); });
            return;
        }
        hid_->bus.unplug(name(number));
        port.NumberOfCommPorts();  // the library lets go of it
        readers_.erase(number);
    }
};

/// A test of the dialogue with a device that runs over each kind of port.
struct OverEachPort : ::testing::TestWithParam<PortKind> {
    static bool isHid() { return GetParam() == PortKind::hid; }

    PortBench bench{GetParam()};
};

inline std::string portKindName(const ::testing::TestParamInfo<PortKind>& kind) {
    return kind.param == PortKind::hid ? "clsVellComm" : "clsMSComm";
}

}  // namespace corvane::fakes

#define CORVANE_OVER_EACH_PORT(suite)                                                                            \
    INSTANTIATE_TEST_SUITE_P(, suite,                                                                            \
                             ::testing::Values(corvane::fakes::PortKind::serial, corvane::fakes::PortKind::hid), \
                             corvane::fakes::portKindName)
