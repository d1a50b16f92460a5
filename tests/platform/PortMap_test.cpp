#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/LinuxPortMap.h"
#include "support/FakePortMap.h"
#include "support/ScratchFolder.h"

namespace corvane {

bool operator==(const PortMapEntry& a, const PortMapEntry& b) { return a.device == b.device && a.port == b.port; }
std::ostream& operator<<(std::ostream& out, const PortMapEntry& entry) {
    return out << entry.device << " = " << entry.port;
}

namespace {

namespace fs = std::filesystem;

/// A machine of files: what the kernel tells, the device nodes, and the operator's file.
struct Machine {
    fakes::ScratchFolder folder;
    LinuxPortMap map{{folder.at("serialcomm.conf"), folder.at("sys"), folder.at("dev")}};

    void add(const std::string& device, const std::string& type = "") const {
        folder.file("dev/" + device, "");
        folder.file("sys/" + device + "/uevent", "");
        if (!type.empty()) folder.file("sys/" + device + "/type", type + "\n");
    }
    void remove(const std::string& device) const {
        fs::remove_all(folder.at("sys/" + device));
        fs::remove(folder.at("dev/" + device));
    }
    void write(const std::string& text) const { folder.file("serialcomm.conf", text); }
    std::string dev(const std::string& device) const { return folder.at("dev/" + device); }
};

struct LinuxSide {
    Machine machine;
    PortMap& map = machine.map;
    LinuxSide() {
        machine.add("ttyS0", "4");
        machine.add("ttyUSB0");
    }
    void unplug() const { machine.remove("ttyUSB0"); }
};

struct FakeSide {
    fakes::FakePortMap fake{{{"ttyS0", "COM1"}, {"ttyUSB0", "COM2"}}};
    PortMap& map = fake;
    void unplug() { fake.entries.pop_back(); }
};

template <typename Side>
class PortMapContract : public testing::Test {
protected:
    Side side;
};

using Sides = testing::Types<FakeSide, LinuxSide>;
TYPED_TEST_SUITE(PortMapContract, Sides);

using Entries = std::vector<PortMapEntry>;

TYPED_TEST(PortMapContract, KnowsPathsAsItListedThemLast) {
    auto& map = this->side.map;
    const auto path = map.devicePath(2).value_or("");
    EXPECT_EQ(path.substr(path.size() - 8), "/ttyUSB0");
    EXPECT_EQ(map.list(), (Entries{{"ttyS0", "COM1"}, {"ttyUSB0", "COM2"}}));
    EXPECT_FALSE(map.devicePath(3));
    this->side.unplug();
    EXPECT_TRUE(map.devicePath(2));
    EXPECT_EQ(map.list(), (Entries{{"ttyS0", "COM1"}}));
    EXPECT_FALSE(map.devicePath(2));
    EXPECT_TRUE(map.problems().empty());
}

TEST(LinuxPortMap, HardwareInAStableOrder) {
    const Machine machine;
    for (const char* device : {"ttyUSB10", "ttyUSB2", "ttyACM0", "rfcomm0", "tty1", "ttyprintk", "ptmx", "ttySx"}) {
        machine.add(device);
    }
    machine.add("ttyS0", "4");
    machine.add("ttyS1", "0");  // no hardware behind it
    machine.add("ttyS2", "4");  // the console
    machine.add("ttyAMA0", "32");
    machine.folder.file("sys/console/active", "tty0 ttyS2\n");
    machine.folder.file("sys/ttyUSB7/uevent", "");  // known to the kernel, without a node
    auto map = machine.map;
    EXPECT_EQ(map.list(), (Entries{{"ttyS0", "COM1"},
                                   {"ttyAMA0", "COM2"},
                                   {"ttyUSB2", "COM3"},
                                   {"ttyUSB10", "COM4"},
                                   {"ttyACM0", "COM5"},
                                   {"rfcomm0", "COM6"}}));
    EXPECT_EQ(map.devicePath(4), machine.dev("ttyUSB10"));
}

TEST(LinuxPortMap, NamedPortsComeFirstUnderTheKernelsName) {
    Machine machine;
    machine.add("ttyS0", "4");
    machine.add("ttyS3", "4");
    machine.add("ttyUSB0");
    machine.add("ttyUSB1");
    machine.folder.file("dev/pts/5", "");
    fs::create_directories(machine.dev("serial"));
    fs::create_symlink("../ttyUSB1", machine.dev("serial/by-a-long-name"));
    machine.folder.file("sys/console/active", "ttyS3\n");
    machine.write("# my ports\n  com12 = " + machine.dev("serial/by-a-long-name") +
                  "   # the reader\nCOM1=" + machine.dev("pts/5") + "\r\nCOM3=/no/such/" + std::string(80, 'x') +
                  "\nCOM4=" + machine.dev("ttyS3"));
    EXPECT_EQ(machine.map.list(), (Entries{{"pts/5", "COM1"},
                                           {std::string(63, 'x'), "COM3"},
                                           {"ttyUSB1", "COM12"},
                                           {"ttyS0", "COM2"},
                                           {"ttyUSB0", "COM5"}}));
    EXPECT_EQ(machine.map.devicePath(12), machine.dev("serial/by-a-long-name"));
    EXPECT_EQ(machine.map.devicePath(3), "/no/such/" + std::string(80, 'x'));
    EXPECT_FALSE(machine.map.devicePath(4));
    ASSERT_EQ(machine.map.problems().size(), 1u);
    EXPECT_EQ(machine.map.problems()[0], machine.folder.at("serialcomm.conf") + ": COM4 is not used: " +
                                             machine.dev("ttyS3") + " is the kernel's console; name another device.");
}

TEST(LinuxPortMap, AutoOffListsTheNamedOnesAlone) {
    Machine machine;
    machine.add("ttyS0", "4");
    machine.write(
        "\xef\xbb\xbf"
        "Auto = OFF\nCOM2=/dev/null\n");
    EXPECT_EQ(machine.map.list(), (Entries{{"null", "COM2"}}));
    machine.write("auto=off\n");
    EXPECT_EQ(machine.map.list(), Entries{});
    machine.write("");
    EXPECT_EQ(machine.map.list(), (Entries{{"ttyS0", "COM1"}}));
}

TEST(LinuxPortMap, LinesThatCannotBeUsedAreSkippedAndTold) {
    Machine machine;
    machine.write(
        "COM2=/dev/null\nCOM0=/dev/null\nCOM257=/dev/null\nCOM=/dev/null\nCOM-1=/dev/null\nport=/dev/null\n"
        "COM3\nCOM4=ttyUSB0\nCOM2=/dev/zero\nauto=maybe\n");
    const auto problems = machine.map.problems();
    ASSERT_EQ(problems.size(), 9u);
    EXPECT_EQ(machine.map.list(), (Entries{{"null", "COM2"}}));
    const auto start = machine.folder.at("serialcomm.conf") + ", line ";
    EXPECT_EQ(problems[0], start +
                               "2, \"COM0=/dev/null\" is not used: write a port from COM1 to COM256, \"=\" and a "
                               "device such as /dev/ttyUSB0.");
    EXPECT_EQ(problems[6], start +
                               "8, \"COM4=ttyUSB0\" is not used: the device must be a whole path, such as "
                               "/dev/ttyUSB0.");
    EXPECT_EQ(problems[7], start +
                               "9, \"COM2=/dev/zero\" is not used: this port has a device already; give the line "
                               "another number.");
    EXPECT_EQ(problems[8], start + "10, \"auto=maybe\" is not used: write auto=off or auto=on.");
    machine.write("COM2=/dev/null\n");
    machine.map.list();
    EXPECT_TRUE(machine.map.problems().empty());
}

TEST(LinuxPortMap, NothingToLookAtIsNoList) {
    Machine machine;
    EXPECT_FALSE(machine.map.list());
    fs::create_directory(machine.folder.at("serialcomm.conf"));
    EXPECT_FALSE(machine.map.list());
    ASSERT_EQ(machine.map.problems().size(), 1u);
    EXPECT_NE(machine.map.problems()[0].find("cannot be read"), std::string::npos);
}

}  // namespace
}  // namespace corvane
