#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

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

TEST(PortInspector, KnowsWhoHasLockedANode) {
    fakes::ScratchFolder tree;
    const auto node = tree.file("dev/hidraw0", ""), other = tree.file("dev/hidraw1", "");
    struct stat status {};
    ASSERT_EQ(stat(node.c_str(), &status), 0);
    char where[64];
    std::snprintf(where, sizeof where, " %02x:%02x:%lu 0 EOF\n", major(status.st_dev), minor(status.st_dev),
                  status.st_ino);
    tree.file("proc/4711/comm", "corvane\n");
    tree.file("proc/locks", std::string("1: POSIX  ADVISORY  WRITE 811") + where + "2: FLOCK  ADVISORY  WRITE " +
                                std::to_string(getpid()) + where + "3: FLOCK  ADVISORY  WRITE 4711" + where +
                                "3: -> FLOCK  ADVISORY  WRITE 812" + where);
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev")});
    for (const auto& holder : {inspector.lockerOf(node), inspector.holderOf(node)}) {
        EXPECT_EQ(holder.value_or(PortHolder()).text(), "corvane (process 4711)");
    }
    EXPECT_FALSE(inspector.lockerOf(other));
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
