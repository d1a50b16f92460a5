#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/LinuxProgramFolder.h"
#include "support/FakeProgramFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

struct LinuxSide {
    fakes::ScratchFolder folder;
    LinuxProgramFolder program{{folder.file("corvane", ""), "../nowhere", folder.at("data")}};
};

struct FakeSide {
    fakes::FakeProgramFolder program;
    fakes::ScratchFolder& folder = program.folder;
};

template <typename Side>
class ProgramFolderContract : public testing::Test {
protected:
    Side side;
};

using Sides = testing::Types<FakeSide, LinuxSide>;
TYPED_TEST_SUITE(ProgramFolderContract, Sides);

TYPED_TEST(ProgramFolderContract, FindsWhatIsThereWithoutRegardToCase) {
    const auto& folder = this->side.folder;
    const ProgramFolder& program = this->side.program;
    folder.file("download/R200.hex", "");
    folder.file("both.txt", "");
    folder.file("BOTH.txt", "");
    EXPECT_EQ(program.path(), folder.path());
    const struct {
        std::string given, found;
    } cases[] = {
        {"\\Download\\r200.HEX", "/download/R200.hex"},
        {"/DOWNLOAD/R200.hex", "/download/R200.hex"},
        {"\\Download\\", "/download"},
        {"\\Download\\New One.hex", "/download/New One.hex"},
        {"\\firmware.inf", "/firmware.inf"},
        {"firmware.inf", "/firmware.inf"},
        {"both.txt", "/both.txt"},
        {"Both.TXT", "/BOTH.txt"},
        {"\\..\\.\\etc\\passwd", "/etc/passwd"},
        {"", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(program.resolve(c.given), folder.path() + c.found) << c.given;
}

TEST(LinuxProgramFolder, InstalledCopiesUseTheUsersFolder) {
    const fakes::ScratchFolder folder;
    const auto executable = folder.file("usr/bin/corvane", "");
    fs::create_directories(folder.at("usr/lib/corvane"));
    const auto data = folder.at("home/.local/share/Corvane");
    EXPECT_EQ(LinuxProgramFolder({executable, "../lib/corvane", data}).path(), data);
    EXPECT_TRUE(fs::is_directory(data));
    EXPECT_EQ(LinuxProgramFolder({executable, "../lib/other", data}).path(), folder.at("usr/bin"));
    EXPECT_EQ(LinuxProgramFolder({folder.at("gone/corvane"), "../lib/corvane", data}).path(), data);
}

TEST(LinuxProgramFolder, TransportLibraryIsNamedBesideOrPrivate) {
    const fakes::ScratchFolder folder;
    const LinuxProgramFolder program({folder.file("usr/bin/corvane", ""), "../lib/corvane", folder.at("data")});
    unsetenv("CORVANE_VELLIO");
    EXPECT_EQ(program.transportLibrary(), folder.at("usr/lib/corvane/VellIO.so"));
    folder.file("usr/bin/VellIO.so", "");
    EXPECT_EQ(program.transportLibrary(), folder.at("usr/bin/VellIO.so"));
    setenv("CORVANE_VELLIO", "/opt/other.so", 1);
    EXPECT_EQ(program.transportLibrary(), "/opt/other.so");
    unsetenv("CORVANE_VELLIO");
}

TEST(LinuxProgramFolder, OfThisTestIsTheFolderOfItsExecutable) {
    EXPECT_EQ(LinuxProgramFolder().path(), fs::read_symlink("/proc/self/exe").parent_path());
}

}  // namespace
}  // namespace corvane
