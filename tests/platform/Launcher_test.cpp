#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "SerialRigs.h"
#include "platform/linux/LinuxLauncher.h"
#include "support/FakeLauncher.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// A program that writes what it finds itself to be, and a desktop whose program for addresses writes the address. Each
/// test ends when what it started has ended and nothing is left of it.
struct LinuxSide {
    fakes::ScratchFolder folder;
    LinuxRuntime runtime;
    LinuxLauncher launcher{runtime};
    std::string program = folder.file("with blanks/the program", R"(#!/bin/sh
exec >"$0.part"
set -- "$0" $(cat /proc/$$/stat)
[ "$2" = "$7" ] && echo own session
readlink /proc/$$/fd/0
sed -n -E 's/^(SigBlk|SigIgn):.*(.{7})$/\1 \2/p' /proc/self/status
mv "$1.part" "$1.out"
)");
    std::string path = std::getenv("PATH");

    LinuxSide() {
        const auto opener =
            folder.file("bin/xdg-open", "#!/bin/sh\necho \"$1\" >\"$0.part\"\nmv \"$0.part\" \"$0.out\"\n");
        fs::permissions(opener, fs::perms(0755));
        setenv("PATH", (folder.at("bin") + ":" + path).c_str(), 1);
    }
    ~LinuxSide() {
        EXPECT_TRUE(waitUntil(runtime, hasNoChild)) << "a zombie is left";
        setenv("PATH", path.c_str(), 1);
    }

    static bool hasNoChild() { return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD; }

    bool wrote(const std::string& file) {
        return waitUntil(runtime, [&] { return fs::exists(folder.at(file)); });
    }
    void breakDesktop() const { setenv("PATH", folder.at("nothing").c_str(), 1); }
};

struct FakeSide {
    fakes::FakeLauncher launcher;
    std::string program = "/opt/the program";
    void breakDesktop() { launcher.failure = "xdg-open: No such file or directory"; }
};

template <typename Side>
class LauncherContract : public testing::Test {
protected:
    Side side;
};

using Sides = testing::Types<FakeSide, LinuxSide>;
TYPED_TEST_SUITE(LauncherContract, Sides);

TYPED_TEST(LauncherContract, StartsAndShowsOrSaysWhyNot) {
    Launcher& launcher = this->side.launcher;
    EXPECT_EQ(launcher.start(this->side.program), "");
    EXPECT_EQ(launcher.open("https://corvane.example/?a=b c&d"), "");
    this->side.breakDesktop();
    EXPECT_EQ(launcher.open("https://corvane.example/"), "xdg-open: No such file or directory");
}

TEST(LinuxLauncher, StartedProgramStandsOnItsOwn) {
    LinuxSide side;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(side.launcher.start(side.program), "");
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, handler);
    ASSERT_TRUE(side.wrote("with blanks/the program.out"));
    EXPECT_EQ(fakes::ScratchFolder::content(side.program + ".out"),
              "own session\n/dev/null\nSigBlk 0000000\nSigIgn 0000000\n");
    EXPECT_NE(fs::status(side.program).permissions() & fs::perms::owner_exec, fs::perms::none);
}

TEST(LinuxLauncher, AddressArrivesWhole) {
    LinuxSide side;
    EXPECT_EQ(side.launcher.open("https://corvane.example/?a=b c&d"), "");
    ASSERT_TRUE(side.wrote("bin/xdg-open.out"));
    EXPECT_EQ(fakes::ScratchFolder::content(side.folder.at("bin/xdg-open.out")), "https://corvane.example/?a=b c&d\n");
    EXPECT_NE(side.launcher.open("--help"), "");
    EXPECT_NE(side.launcher.open(""), "");
}

TEST(LinuxLauncher, WhatCannotRunIsTold) {
    LinuxSide side;
    auto& launcher = side.launcher;
    const auto missing = side.folder.at("missing");
    EXPECT_EQ(launcher.start(missing), missing + ": No such file or directory");
    const auto lost = side.folder.file("lost", "#!/no/such/interpreter\n");
    EXPECT_EQ(launcher.start(lost), lost + ": No such file or directory");
    EXPECT_EQ(launcher.start(side.folder.path()), side.folder.path() + ": Permission denied");
}

}  // namespace
}  // namespace corvane
