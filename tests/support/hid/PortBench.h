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
public:
    static std::unique_ptr<PortBench> make(PortKind kind);
    virtual ~PortBench() = default;

    FakeRuntime& runtime;
    clsIMScomm& port;

    virtual std::string name(std::int16_t number) const = 0;

    /// A device, not owned, at that port, in place of the one that was there. Readers come in the order of their
    /// numbers.
    virtual void plug(std::int16_t number, models::Peer& device) = 0;
    virtual void unplugAll() = 0;

    /// The port is listed, and does not open.
    virtual void refuse(std::int16_t number) = 0;

    /// Plugs the device in at the first port and opens that.
    void open(models::Peer& device, const std::string& settings = "19200,N,8,1") {
        plug(1, device);
        port.CommPort(name(1));
        port.Settings(settings);
        port.PortOpen(true);
    }

protected:
    PortBench(FakeRuntime& theRuntime, clsIMScomm& thePort) : runtime(theRuntime), port(thePort) {}
};

/// A test of the dialogue with a device that runs over each kind of port.
class OverEachPort : public ::testing::TestWithParam<PortKind> {
protected:
    static bool isHid() { return GetParam() == PortKind::hid; }

private:
    std::unique_ptr<PortBench> owned_ = PortBench::make(GetParam());

protected:
    PortBench& bench = *owned_;
};

inline std::string portKindName(const ::testing::TestParamInfo<PortKind>& kind) {
    return kind.param == PortKind::hid ? "clsVellComm" : "clsMSComm";
}

}  // namespace corvane::fakes

#define CORVANE_OVER_EACH_PORT(suite)                                                                            \
    INSTANTIATE_TEST_SUITE_P(, suite,                                                                            \
                             ::testing::Values(corvane::fakes::PortKind::serial, corvane::fakes::PortKind::hid), \
                             corvane::fakes::portKindName)
