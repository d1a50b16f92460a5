#include "bench/ConfigFolder.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>

#include "support/ScratchFolder.h"

namespace corvane::bench {
namespace {

using fakes::ScratchFolder;

unsigned modeOf(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST(ConfigFolder, ShowsTheBenchAlone) {
    ScratchFolder scratch;
    const std::string map = scratch.at("config/Corvane/serialcomm.conf");
    const std::string settings = scratch.at("config/Corvane/Corvane.conf");
    const ConfigFolder folder(scratch.at("config"));
    folder.writePorts({{3, "/dev/pts/7"}, {12, "/dev/pts/9"}});
    folder.writePorts({{12, "/dev/pts/9"}});
    folder.writeSettings({{"FTP", "OffLine", "True"}, {"Query", "LastROM", "a;b"}, {"FTP", "Proxy", ""}});
    EXPECT_EQ(ScratchFolder::content(map),
              "# Written by corvane-bench; a program that reads this sees simulated devices only.\n"
              "auto=off\n"
              "COM12=/dev/pts/9\n");
    EXPECT_EQ(ScratchFolder::content(settings), "[FTP]\nOffLine=True\nProxy=\n[Query]\nLastROM=a;b\n");
    for (const auto* name : {"config", "config/Corvane", "config/data"}) EXPECT_EQ(modeOf(scratch.at(name)), 0700U);
    for (const auto& file : {map, settings}) EXPECT_EQ(modeOf(file), 0600U);
    const ConfigFolder again(scratch.at("config"));  // which is its own, so nothing is thrown
}

TEST(ConfigFolder, LeavesSomebodysOwnConfigurationAlone) {
    std::string temporary;
    {
        const ConfigFolder folder("");
        temporary = folder.path();
        EXPECT_EQ(modeOf(temporary), 0700U);
    }
    EXPECT_EQ(modeOf(temporary), 0U);
    for (const auto* name : {"Corvane/serialcomm.conf", "Corvane/Corvane.conf"}) {
        ScratchFolder scratch;
        const auto file = scratch.file(name, "COM1=/dev/ttyUSB0\n");
        EXPECT_THROW(ConfigFolder folder(scratch.path()), std::runtime_error) << name;
        EXPECT_EQ(ScratchFolder::content(file), "COM1=/dev/ttyUSB0\n");
    }
}

}  // namespace
}  // namespace corvane::bench
