#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/LinuxProgramFolder.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

TEST(LinuxProgramFolder, FindsWhatIsThereWithoutRegardToCase) {
    const fakes::ScratchFolder folder;
    const LinuxProgramFolder program({folder.file("corvane", ""), "../nowhere", folder.at("data")});
    for (const char* file : {"download/R200.hex", "both.txt", "BOTH.txt"}) folder.file(file, "");
    EXPECT_EQ(program.path(), folder.path());
    const std::pair<const char*, const char*> cases[] = {
        {"\\Download\\r200.HEX", "/download/R200.hex"},
        {"\\Download\\", "/download"},
        {"/DOWNLOAD/New One.hex", "/download/New One.hex"},
        {"both.txt", "/both.txt"},
        {"Both.TXT", "/BOTH.txt"},
        {"\\..\\.\\etc\\passwd", "/etc/passwd"},
        {"", ""},
    };
    for (const auto& [given, found] : cases) EXPECT_EQ(program.resolve(given), folder.path() + found) << given;
    EXPECT_EQ(LinuxProgramFolder().path(), fs::read_symlink("/proc/self/exe").parent_path());
}

TEST(LinuxProgramFolder, InstalledCopiesUseTheUsersFolderAndAPrivateLibrary) {
    const fakes::ScratchFolder folder;
    const auto executable = folder.file("usr/bin/corvane", "");
    fs::create_directories(folder.at("usr/lib/corvane"));
    const auto data = folder.at("home/.local/share/Corvane");
    const LinuxProgramFolder installed({executable, "../lib/corvane", data});
    EXPECT_EQ(installed.path(), data);
    EXPECT_TRUE(fs::is_directory(data));
    EXPECT_EQ(LinuxProgramFolder({executable, "../lib/other", data}).path(), folder.at("usr/bin"));
    EXPECT_EQ(LinuxProgramFolder({folder.at("gone/corvane"), "../lib/corvane", data}).path(), data);

    unsetenv("CORVANE_VELLIO");
    EXPECT_EQ(installed.transportLibrary(), folder.at("usr/lib/corvane/VellIO.so"));
    folder.file("usr/bin/VellIO.so", "");
    EXPECT_EQ(installed.transportLibrary(), folder.at("usr/bin/VellIO.so"));
    setenv("CORVANE_VELLIO", "/opt/other.so", 1);
    EXPECT_EQ(installed.transportLibrary(), "/opt/other.so");
    unsetenv("CORVANE_VELLIO");
}

TEST(LinuxProgramFolder, PrivateFoldersAreThisUsersAndGoAfterTheirProgram) {
    const fakes::ScratchFolder folder;
    const LinuxProgramFolder program({folder.at("x"), "lib", folder.at("data")});
    const auto gone = fork();
    if (gone == 0) _exit(0);
    waitpid(gone, nullptr, 0);
    const auto left = folder.file("data/fetched/" + std::to_string(gone) + "-abc/x.pdf", "");
    const auto one = program.privateFolder(), another = program.privateFolder();
    EXPECT_NE(one, another);
    EXPECT_EQ(fs::status(one).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_directory(one));
    EXPECT_FALSE(fs::exists(fs::path(left).parent_path()));
    EXPECT_EQ(LinuxProgramFolder({folder.at("x"), "lib", "/proc/no"}).privateFolder(), "");
}

}  // namespace
}  // namespace corvane
