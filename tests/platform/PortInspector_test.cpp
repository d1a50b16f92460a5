#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/ProcPortInspector.h"
#include "support/PseudoTerminal.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

/// Another process that has a node open until the object ends.
class Holder {
public:
    explicit Holder(const std::string& node) {
        int ready[2], stop[2];
        EXPECT_EQ(pipe(ready) + pipe(stop), 0);
        process_ = fork();
        if (process_ == 0) {
            close(stop[1]);
            char byte = 0;
            const bool opened = open(node.c_str(), O_RDWR | O_NOCTTY) >= 0;
            if (!opened || write(ready[1], "x", 1) != 1) _exit(1);
            _exit(static_cast<int>(read(stop[0], &byte, 1)));
        }
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        for (const int end : {ready[0], ready[1], stop[0]}) close(end);
        stop_ = stop[1];
    }
    ~Holder() {
        close(stop_);
        waitpid(process_, nullptr, 0);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    int process() const { return process_; }

private:
    int process_ = 0;
    int stop_ = -1;
};

TEST(PortInspector, FindsWhoHoldsANode) {
    ProcPortInspector inspector;
    fakes::PseudoTerminal terminal;
    EXPECT_FALSE(inspector.holderOf(terminal.path()));
    {
        const Holder holder(terminal.path());
        const auto found = inspector.holderOf(terminal.path());
        ASSERT_TRUE(found);
        EXPECT_EQ(found->process, holder.process());
        EXPECT_EQ(found->program, "test_platform");
    }
    EXPECT_FALSE(inspector.holderOf(terminal.path()));
    EXPECT_FALSE(inspector.holderOf("/dev/does-not-exist"));
    EXPECT_NE(inspector.userName(), "");
    EXPECT_NE(inspector.groupOf(terminal.path()), "");
    EXPECT_EQ(inspector.groupOf("/dev/does-not-exist"), "");
}

TEST(PortInspector, KnowsWhichAdaptersTheModemServiceProbes) {
    fakes::ScratchFolder tree;
    const auto adapter = tree.at("dev/ttyUSB0"), other = tree.at("dev/ttyS0");
    tree.file("dev/x", "");
    // Regular files stand for the nodes: the kind of port is told by the name, the udev entry by the device number.
    tree.file("dev/ttyUSB0", "");
    tree.file("dev/ttyS0", "");
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
