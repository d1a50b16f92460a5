#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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
    std::string report = folder.at("report");
    std::string program = folder.file("with blanks/the program", "#!/usr/bin/awk -f\nBEGIN { out = \"" + report + R"("
    getline stat < "/proc/self/stat"
    pid = stat + 0
    sub(/.*\) /, "", stat)
    split(stat, field, " ")
    print (field[4] == pid ? "own session" : "not alone") > out
    while ((getline line < "/proc/self/status") > 0)
        if (line ~ /^Sig(Blk|Ign)/) print substr(line, 1, 6), substr(line, length(line) - 6) > out
    close(out)
    system("readlink /proc/self/fd/0 >>'" out "'")
})");
    std::string path = std::getenv("PATH");

    LinuxSide() {
        const auto opener = folder.file("bin/xdg-open", "#!/bin/sh\necho \"$1\" >\"$0.out\"\n");
        fs::permissions(opener, fs::perms(0755));
        setenv("PATH", (folder.at("bin") + ":" + path).c_str(), 1);
    }
    ~LinuxSide() {
        EXPECT_TRUE(waitUntil(runtime, hasNoChild)) << "a zombie is left";
        setenv("PATH", path.c_str(), 1);
    }

    static bool hasNoChild() { return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD; }

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
    const int input = dup(STDIN_FILENO);
    ASSERT_TRUE(std::freopen(side.program.c_str(), "r", stdin));
    EXPECT_EQ(side.launcher.start(side.program), "");
    dup2(input, STDIN_FILENO);
    ::close(input);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, handler);
    ASSERT_TRUE(waitUntil(side.runtime, LinuxSide::hasNoChild));
    EXPECT_EQ(fakes::ScratchFolder::content(side.report), "own session\nSigBlk 0000000\nSigIgn 0000000\n/dev/null\n");
    EXPECT_NE(fs::status(side.program).permissions() & fs::perms::owner_exec, fs::perms::none);
}

TEST(LinuxLauncher, AddressArrivesWhole) {
    LinuxSide side;
    EXPECT_EQ(side.launcher.open("https://corvane.example/?a=b c&d"), "");
    ASSERT_TRUE(waitUntil(side.runtime, LinuxSide::hasNoChild));
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
