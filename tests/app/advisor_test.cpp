#include <gtest/gtest.h>

#include "app/PortAdvisor.h"
#include "models/Device.h"
#include "support/FakeSystem.h"
#include "support/SerialBench.h"

namespace corvane::tests {

TEST(Advice, NamesTheCure) {
    fakes::SerialBench serial;
    fakes::FakePortInspector inspector;
    PortAdvisor advisor(serial.control, serial.map, inspector);
    models::Device device({});
    serial.plug(1, device);
    serial.port.CommPort("COM1");
    serial.control.markBusy(1);
    serial.port.PortOpen(true);
    const auto node = serial.control.openFailure().path;
    EXPECT_EQ(advisor.refusal("COM1"), "COM1 (" + node + ") is in use by another program. Close that and start again.");
    inspector.holders[node] = {4711, "minicom"};
    EXPECT_EQ(advisor.refusal("COM1"),
              "COM1 (" + node + ") is in use by minicom (process 4711). Close that and start again.");
    serial.control.markBusy(1, false);
    serial.control.markForbidden(1);
    serial.port.PortOpen(true);
    EXPECT_EQ(advisor.refusal("COM1"),
              "You may not use COM1 (" + node + "), which belongs to the group dialout. Run \"sudo chown olive " +
                  node +
                  "\" and start again; for good, join the group: \"sudo adduser olive dialout\", "
                  "then log in anew.");
    PortAdvisor::ReaderFailure failure{"/dev/hidraw0: Permission denied", "/dev/hidraw0", false};
    advisor.readerFailure = [&](const std::string&) { return failure; };
    EXPECT_EQ(
        advisor.refusal("HID1"),
        "HID1 does not open: /dev/hidraw0: Permission denied. Plug the reader in again; when this user may not use "
        "it, install the udev rules of this program.");
    failure.isInUse = true;
    inspector.holders["/dev/hidraw0"] = {4711, "corvane"};
    EXPECT_EQ(advisor.refusal("HID1"),
              "HID1 (/dev/hidraw0) is in use by corvane (process 4711). Close that and start again.");
    inspector.probed.insert("/dev/ttyS1");
    EXPECT_EQ(advisor.beforeScan({"", "COM1", "HID1"}).size(), 1U);
}

}  // namespace corvane::tests
