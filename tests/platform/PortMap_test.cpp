#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/LinuxPortMap.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

namespace fs = std::filesystem;

/// "COM1=ttyS0 COM2=ttyUSB0", in the order of the list.
std::string listOf(LinuxPortMap& map) {
    const auto entries = map.list();
    if (!entries) return "unreadable";
    std::string text;
    for (const auto& entry : *entries) text += (text.empty() ? "" : " ") + entry.port + "=" + entry.device;
    return text;
}

/// A machine of files: what the kernel tells, the device nodes, and the operator's file.
struct Machine {
    fakes::ScratchFolder folder;
    LinuxPortMap map{{folder.at("serialcomm.conf"), folder.at("sys"), folder.at("dev")}};

    void add(const std::string& device, const std::string& type = "") const {
        folder.file("dev/" + device, "");
        folder.file("sys/" + device + "/uevent", "");
        if (!type.empty()) folder.file("sys/" + device + "/type", type + "\n");
    }
    void write(const std::string& text) const { folder.file("serialcomm.conf", text); }
    std::string dev(const std::string& device) const { return folder.at("dev/" + device); }
};

TEST(LinuxPortMap, HardwareInAStableOrder) {
    Machine machine;
    for (const char* device : {"ttyUSB10", "ttyUSB2", "ttyACM0", "rfcomm0", "tty1", "ttyprintk", "ptmx", "ttySx"}) {
        machine.add(device);
    }
    machine.add("ttyS0", "4");
    machine.add("ttyS1", "0");  // no hardware behind it
    machine.add("ttyS2", "4");  // the console
    machine.add("ttyAMA0", "32");
    machine.folder.file("sys/console/active", "tty0 ttyS2\n");
    machine.folder.file("sys/ttyUSB7/uevent", "");  // known to the kernel, without a node
    EXPECT_EQ(listOf(machine.map), "COM1=ttyS0 COM2=ttyAMA0 COM3=ttyUSB2 COM4=ttyUSB10 COM5=ttyACM0 COM6=rfcomm0");
    EXPECT_EQ(machine.map.devicePath(4), machine.dev("ttyUSB10"));
    fs::remove_all(machine.folder.at("sys/rfcomm0"));
    EXPECT_TRUE(machine.map.devicePath(6)) << "as it was listed last";
    EXPECT_EQ(listOf(machine.map), "COM1=ttyS0 COM2=ttyAMA0 COM3=ttyUSB2 COM4=ttyUSB10 COM5=ttyACM0");
    EXPECT_FALSE(machine.map.devicePath(6));
    EXPECT_TRUE(machine.map.problems().empty());
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
    EXPECT_EQ(listOf(machine.map),
              "COM1=pts/5 COM3=" + std::string(63, 'x') + " COM12=ttyUSB1 COM2=ttyS0 COM5=ttyUSB0");
    EXPECT_EQ(machine.map.devicePath(12), machine.dev("serial/by-a-long-name"));
    EXPECT_EQ(machine.map.devicePath(3), "/no/such/" + std::string(80, 'x'));
    EXPECT_FALSE(machine.map.devicePath(4));
    EXPECT_EQ(machine.map.problems(), std::vector<std::string>{machine.folder.at("serialcomm.conf") +
                                                               ": COM4 is not used: " + machine.dev("ttyS3") +
                                                               " is the kernel's console; name another device."});
}

TEST(LinuxPortMap, LinesThatCannotBeUsedAreSkippedAndTold) {
    Machine machine;
    EXPECT_EQ(listOf(machine.map), "unreadable") << "there is nothing to look at";
    machine.add("ttyS0", "4");
    const auto mark = std::string("\xef\xbb\xbf");
    for (const auto& [text, list] :
         {std::pair(mark + "Auto = OFF\nCOM2=/dev/null\n", "COM2=null"), std::pair(std::string("auto=off\n"), ""),
          std::pair(std::string(), "COM1=ttyS0")}) {
        machine.write(text);
        EXPECT_EQ(listOf(machine.map), list);
        EXPECT_TRUE(machine.map.problems().empty());
    }
    const std::string port = "write a port from COM1 to COM256, \"=\" and a device such as /dev/ttyUSB0.";
    const std::string path = "the device must be a whole path, such as /dev/ttyUSB0.";
    const std::pair<const char*, std::string> bad[] = {
        {"COM0=/dev/null", port},
        {"COM257=/dev/null", port},
        {"port=/dev/null", port},
        {"COM3", path},
        {"COM4=ttyUSB0", path},
        {"COM2=/dev/zero", "this port has a device already; give the line another number."},
        {"auto=maybe", "write auto=off or auto=on."},
    };
    for (const auto& [line, advice] : bad) {
        machine.write("COM2=/dev/null\nauto=off\n" + std::string(line) + "\n");
        EXPECT_EQ(listOf(machine.map), "COM2=null") << line;
        EXPECT_EQ(machine.map.problems(),
                  std::vector<std::string>{machine.folder.at("serialcomm.conf") + ", line 3, \"" + line +
                                           "\" is not used: " + advice});
    }
    fs::remove(machine.folder.at("serialcomm.conf"));
    fs::create_directory(machine.folder.at("serialcomm.conf"));
    EXPECT_EQ(listOf(machine.map), "COM1=ttyS0");
    EXPECT_NE(machine.map.problems().at(0).find("cannot be read"), std::string::npos);
}

}  // namespace corvane::tests
