#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "platform/linux/serial/ProcPortInspector.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

TEST(PortInspector, KnowsWhichAdaptersTheModemServiceProbes) {
    fakes::ScratchFolder tree;
    // Regular files stand for the nodes: the kind of port is told by the name, the udev entry by the device number.
    const auto adapter = tree.file("dev/ttyUSB0", ""), other = tree.file("dev/ttyS0", "");
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev")});
    EXPECT_FALSE(inspector.isProbedForModems(adapter));
    tree.file("proc/self/comm", "ModemManager\n");
    EXPECT_FALSE(inspector.isProbedForModems(adapter));
    tree.file("proc/812/comm", "ModemManager\n");
    EXPECT_TRUE(inspector.isProbedForModems(adapter));
    EXPECT_FALSE(inspector.isProbedForModems(other));
    struct stat status {};
    ASSERT_EQ(stat(adapter.c_str(), &status), 0);
    const auto entry = "udev/c" + std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
    tree.file(entry, "E:ID_BUS=usb\nE:ID_MM_DEVICE_IGNORE=1\n");
    EXPECT_FALSE(inspector.isProbedForModems(adapter));
}

}  // namespace
}  // namespace corvane
