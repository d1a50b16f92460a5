#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "platform/linux/events/PortEvents.h"
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

TEST(PortInspector, KnowsAnAdapterByWhatUsbSaysOfIt) {
    using namespace std::string_view_literals;
    fakes::ScratchFolder tree;
    const auto node = tree.file("dev/ttyUSB0", "");
    tree.file("sys/usb/1-2/idVendor", "1a86\n");
    tree.file("sys/usb/1-2/product", "USB Serial\n");
    tree.file("sys/usb/1-2/serial", "A9001\n");
    tree.file("sys/usb/1-2/1-2:1.0/ttyUSB0/x", "");
    tree.file("class/ttyUSB0/x", "");
    std::filesystem::create_directory_symlink(tree.at("sys/usb/1-2/1-2:1.0/ttyUSB0"), tree.at("class/ttyUSB0/device"));
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev"), tree.at("class")});
    const auto adapter = inspector.adapterOf(node);
    EXPECT_EQ(adapter.product + "," + adapter.serialNumber, "USB Serial,A9001");
    EXPECT_EQ(inspector.adapterOf(tree.file("dev/ttyS0", "")).product, "");
    EXPECT_TRUE(PortEvents::isAboutPort("add@/devices/x\0ACTION=add\0SUBSYSTEM=tty\0SEQNUM=1\0"sv));
    EXPECT_FALSE(PortEvents::isAboutPort("add@/devices/x\0SUBSYSTEM=tty_port\0"sv));
}

}  // namespace
}  // namespace corvane
