#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/LinuxLauncher.h"
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
    std::string program = folder.file("with blanks/the program", "#!/bin/sh\nexec >'" + report + R"sh('
[ "$(sed 's/.*) //' /proc/$$/stat | cut -d' ' -f4)" = $$ ] && echo own session
sed -nE 's/^(Sig(Blk|Ign)).*(.{7})$/\1 \3/p' /proc/self/status
readlink /proc/$$/fd/0
echo "$GIVEN, $HOME"
)sh");
    std::string path = std::getenv("PATH");

    LinuxSide() {
        const auto opener = folder.file("bin/xdg-open", "#!/bin/sh\necho \"$1\" >\"$0.out\"\n");
        fs::permissions(opener, fs::perms(0755));
        setenv("PATH", (folder.at("bin") + ":" + path).c_str(), 1);
    }
    ~LinuxSide() {
        hasEnded();
        setenv("PATH", path.c_str(), 1);
    }

    void hasEnded() {
        const auto noChild = [] {
            return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
        };
        for (int waits = 0; waits < 500 && !noChild(); ++waits) runtime.WaitActivity(10);
        EXPECT_TRUE(noChild()) << "a zombie is left";
    }
};

TEST(LinuxLauncher, StartedProgramStandsOnItsOwnAndAddressesArriveWhole) {
    LinuxSide side;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    const int input = dup(STDIN_FILENO);
    ASSERT_TRUE(std::freopen(side.program.c_str(), "r", stdin));
    setenv("GIVEN", "old", 1);
    EXPECT_EQ(side.launcher.start(side.program, {{"GIVEN", "new one"}}), "");
    unsetenv("GIVEN");
    dup2(input, STDIN_FILENO);
    ::close(input);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, handler);
    EXPECT_EQ(side.launcher.open("https://corvane.example/?a=b c&d"), "");
    side.hasEnded();
    EXPECT_EQ(
        fakes::ScratchFolder::content(side.report),
        "own session\nSigBlk 0000000\nSigIgn 0000000\n/dev/null\nnew one, " + std::string(std::getenv("HOME")) + "\n");
    EXPECT_NE(fs::status(side.program).permissions() & fs::perms::owner_exec, fs::perms::none);
    EXPECT_EQ(fakes::ScratchFolder::content(side.folder.at("bin/xdg-open.out")), "https://corvane.example/?a=b c&d\n");
}

TEST(LinuxLauncher, WhatCannotRunIsTold) {
    LinuxSide side;
    const auto lost = side.folder.file("lost", "#!/no/such/interpreter\n");
    EXPECT_EQ(side.launcher.start(lost, {}), lost + ": No such file or directory");
    EXPECT_EQ(side.launcher.start(side.folder.path(), {}), side.folder.path() + ": Permission denied");
    EXPECT_NE(side.launcher.open("--help"), "");
    setenv("PATH", side.folder.at("nothing").c_str(), 1);
    EXPECT_EQ(side.launcher.open("https://corvane.example/"), "xdg-open: No such file or directory");
}

TEST(LinuxLauncher, ProgramIsAWholeOneForThisMachineOrAScript) {
    LinuxSide side;
    const auto own = fakes::ScratchFolder::content("/proc/self/exe");
    const auto with = [&own](std::size_t place, char byte) { return std::string(own).replace(place, 1, 1, byte); };
    const auto cut = "it is a part of a program only: it ends before its contents do";
    const std::pair<std::string, std::string> kFiles[] = {
        {own, ""},
        {"#!/bin/sh -e\n", ""},
        {"#! /bin/sh", ""},
        {own.substr(0, own.size() / 2), cut},
        {own.substr(0, own.size() - 1), cut},
        {own.substr(0, 30), cut},
        {with(4, 1), "it is made for another kind of machine"},
        {with(18, 40), "it is made for another kind of machine"},
        {with(16, 1), "it is no program, but another kind of ELF file"},
        {"#!/no/such/interpreter\n", "what is to run it, \"/no/such/interpreter\", is not there"},
        {"#!sh\n", "what is to run it, \"sh\", is not there"},
        {"#!", "what is to run it, \"\", is not there"},
        {"<html>", "it is no program"},
        {"", "it is no program"},
    };
    for (const auto& [content, fault] : kFiles)
        EXPECT_EQ(side.launcher.fault(side.folder.file("it", content)), fault) << content.substr(0, 30);
}

}  // namespace
}  // namespace corvane
