// Programs, libraries, ports and streams as the system has them.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/LinuxConsole.h"
#include "platform/linux/LinuxLauncher.h"
#include "platform/linux/QtDigest.h"
#include "platform/linux/Signals.h"
#include "platform/linux/SysfsPowerSupply.h"
#include "platform/linux/events/PortEvents.h"
#include "platform/linux/files/StandardDescriptors.h"
#include "platform/linux/serial/ProcPortInspector.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

namespace fs = std::filesystem;

TEST(StandardStream, NeverWaitsForItsReaderAndDropsWhatNobodyReads) {
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    StandardStream stream(ends[1]);
    EXPECT_FALSE(stream.isTerminal());
    std::string text, taken;
    for (int i = 0; i < 40000; ++i) text += "line " + std::to_string(i) + "\n";
    stream.write(text);  // a pipe holds 64 KiB of it, and nobody reads yet
    char buffer[65536];
    for (int i = 0; i < 100 && taken.size() < text.size(); ++i) {
        taken.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(0, read(ends[0], buffer, sizeof buffer))));
        stream.flush();
    }
    EXPECT_EQ(taken, text);
    close(ends[0]);
    stream.write(std::string(1 << 20, 'x'));
    stream.finish();
    close(ends[1]);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(SignalSource, TurnsSignalsThatAreNotIgnoredIntoCallsWhileItLives) {
    LinuxRuntime runtime;
    int calls = 0;
    std::signal(SIGHUP, SIG_IGN);
    ignoreIdleSignals();
    {
        const SignalSource source(runtime, [&] { ++calls; });
        for (const int one : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM,
                              SIGPROF, SIGXCPU, SIGIO, SIGPWR, SIGSTKFLT, SIGRTMIN, SIGRTMAX}) {
            const int before = calls;
            raise(one);
            runtime.WaitActivity(1);
            EXPECT_EQ(calls, before) << one;
            runtime.DoEvents();
        }
        raise(SIGTERM);  // nobody looks any more
    }
    runtime.DoEvents();
    EXPECT_EQ(calls, 3);
    holdEndingSignals();
    {
        const SignalSource source(runtime, [] {});
    }
    raise(SIGTERM);  // a program that held it back puts its things away undisturbed
    std::signal(SIGTERM, SIG_IGN);
    releaseSignals();
    for (int one = 1; one <= SIGRTMAX; ++one) std::signal(one, SIG_DFL);
}

TEST(StandardDescriptors, AreThereBeforeAnythingElseIsOpened) {
    const auto startedWithoutThem = [] {
        for (const int one : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(one);
        fillStandardDescriptors();
        _exit(open("/dev/null", O_RDONLY));
    };
    const int first = open("/dev/null", O_RDONLY);  // what a program opens that was started with all three
    close(first);
    EXPECT_EXIT(startedWithoutThem(), testing::ExitedWithCode(first), "");
}

TEST(DlModuleLoader, OpensLooksUpAndReleases) {
    DlModuleLoader loader;
    const std::string path = CORVANE_TEST_MODULE;
    EXPECT_EQ(loader.opened(path), nullptr);
    const auto first = loader.open(path);
    ASSERT_NE(first, nullptr) << loader.problem();
    const auto second = loader.opened(path);
    EXPECT_EQ(second, first);
    EXPECT_EQ(loader.lookUp(first, "question"), nullptr);
    loader.release(first);
    EXPECT_NE(loader.lookUp(second, "answer"), nullptr);
    loader.release(second);
    EXPECT_EQ(loader.opened(path), nullptr);
    for (const char* none : {"/no/such/module.so", "/proc/self/maps", "libc.so.6"}) {
        EXPECT_EQ(loader.open(none), nullptr) << none;
        EXPECT_NE(loader.problem(), "") << none;
    }
    EXPECT_EQ(loader.lookUp(nullptr, "answer"), nullptr);
    loader.release(nullptr);
}

TEST(PowerSupply, IsTheBatteryWhenThatDischargesAndNoMainsIsOn) {
    const fakes::ScratchFolder folder;
    SysfsPowerSupply power(folder.path());
    const auto supply = [&folder](const std::string& name, const std::string& attribute, const std::string& value) {
        folder.file(name + "/" + attribute, value + "\n");
    };
    EXPECT_FALSE(SysfsPowerSupply("/nowhere").isOnBattery());
    supply("mouse", "type", "Battery");
    supply("mouse", "scope", "Device");
    supply("mouse", "status", "Discharging");
    EXPECT_FALSE(power.isOnBattery());
    supply("BAT0", "type", "Battery");
    supply("BAT0", "status", "Discharging");
    EXPECT_TRUE(power.isOnBattery());
    supply("AC", "type", "Mains");
    supply("AC", "online", "1");
    EXPECT_FALSE(power.isOnBattery());
    supply("AC", "online", "0");
    EXPECT_TRUE(power.isOnBattery());
    supply("BAT0", "status", "Charging");
    EXPECT_FALSE(power.isOnBattery());
}

TEST(PortInspector, KnowsWhichAdaptersTheModemServiceProbes) {
    fakes::ScratchFolder tree;
    // Regular files stand for the nodes: the kind of port is told by the name, the udev entry by the device number.
    const auto adapter = tree.file("dev/ttyUSB0", ""), other = tree.file("dev/ttyS0", "");
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev")});
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

TEST(PortInspector, DoesNotTakeASimulatedDeviceForAProgramThatHasItsPort) {
    fakes::ScratchFolder tree;
    const int far = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(far >= 0 && grantpt(far) == 0 && unlockpt(far) == 0);
    const std::string node = ptsname(far);
    tree.file("proc/812/fd/0", "");
    std::filesystem::create_symlink(node, tree.at("proc/812/fd/3"));
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev")});
    EXPECT_EQ(inspector.holderOf(node)->process, 812);
    tree.file("proc/812/fdinfo/4", "pos:\t0\ntty-index:\t" + node.substr(9) + "\n");
    EXPECT_FALSE(inspector.holderOf(node));
    close(far);
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
    fs::create_directory_symlink(tree.at("sys/usb/1-2/1-2:1.0/ttyUSB0"), tree.at("class/ttyUSB0/device"));
    ProcPortInspector inspector({tree.at("proc"), tree.at("udev"), tree.at("class")});
    const auto adapter = inspector.adapterOf(node);
    EXPECT_EQ(adapter.product + "," + adapter.serialNumber, "USB Serial,A9001");
    EXPECT_EQ(inspector.adapterOf(tree.file("dev/ttyS0", "")).product, "");
    EXPECT_TRUE(PortEvents::isAboutPort("add@/devices/x\0ACTION=add\0SUBSYSTEM=tty\0SEQNUM=1\0"sv));
    EXPECT_FALSE(PortEvents::isAboutPort("add@/devices/x\0SUBSYSTEM=tty_port\0"sv));
}

/// A program that writes what it finds itself to be, and a desktop whose program for addresses writes the address. Each
/// test ends when what it started has ended and nothing is left of it.
struct Launching : testing::Test {
    Launching() {
        const auto opener = folder.file("bin/xdg-open", "#!/bin/sh\necho \"$1\" >\"$0.out\"\n");
        fs::permissions(opener, fs::perms(0755));
        setenv("PATH", (folder.at("bin") + ":" + path).c_str(), 1);
    }
    ~Launching() override {
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

    static std::string digestOf(const std::string& path) {
        return QtDigest().sha256(fakes::ScratchFolder::content(path));
    }

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
};

TEST_F(Launching, StartedProgramStandsOnItsOwnAndAddressesArriveWhole) {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    const int input = dup(STDIN_FILENO);
    ASSERT_TRUE(std::freopen(program.c_str(), "r", stdin));
    setenv("GIVEN", "old", 1);
    EXPECT_EQ(launcher.start(program, digestOf(program), {{"GIVEN", "new one"}}), "");
    unsetenv("GIVEN");
    dup2(input, STDIN_FILENO);
    ::close(input);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, handler);
    EXPECT_EQ(launcher.open("https://corvane.example/?a=b c&d"), "");
    hasEnded();
    EXPECT_EQ(
        fakes::ScratchFolder::content(report),
        "own session\nSigBlk 0000000\nSigIgn 0000000\n/dev/null\nnew one, " + std::string(std::getenv("HOME")) + "\n");
    EXPECT_EQ(fakes::ScratchFolder::content(folder.at("bin/xdg-open.out")), "https://corvane.example/?a=b c&d\n");
}

TEST_F(Launching, WhatWasReplacedSinceItWasCheckedIsNotStarted) {
    const auto checked = digestOf(program);
    fs::permissions(program, fs::perms(0666));
    std::ofstream(program, std::ios::app) << "echo more\n";
    EXPECT_EQ(launcher.start(program, checked, {}), program + ": it was changed after it was checked");
    EXPECT_EQ(fs::status(program).permissions(), fs::perms(0744)) << "nobody else may change it while it is looked at";
    fs::rename(folder.file("other", "#!/bin/sh\n"), program);
    EXPECT_EQ(launcher.start(program, checked, {}), program + ": it was changed after it was checked");
    EXPECT_FALSE(fs::exists(report));
}

TEST_F(Launching, WhatCannotRunIsTold) {
    const auto lost = folder.file("lost", "#!/no/such/interpreter\n");
    EXPECT_EQ(launcher.start(lost, digestOf(lost), {}), lost + ": No such file or directory");
    EXPECT_EQ(launcher.start(folder.path(), "", {}), folder.path() + ": Permission denied");
    EXPECT_EQ(launcher.start(folder.at("none"), "", {}), folder.at("none") + ": No such file or directory");
    EXPECT_NE(launcher.open("--help"), "");
    setenv("PATH", folder.at("nothing").c_str(), 1);
    EXPECT_EQ(launcher.open("https://corvane.example/"), "xdg-open: No such file or directory");
}

TEST_F(Launching, ProgramIsAWholeOneForThisMachineOrAScript) {
    const auto own = fakes::ScratchFolder::content("/proc/self/exe");
    const auto with = [&own](std::size_t place, char byte) { return std::string(own).replace(place, 1, 1, byte); };
    const auto cut = "it is a part of a program only: it ends before its contents do";
    const std::pair<std::string, std::string> kFiles[] = {
        {own, ""},
        {"#!/bin/sh -e\n", ""},
        {"#! /bin/sh", ""},
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
        EXPECT_EQ(launcher.fault(folder.file("it", content)), fault) << content.substr(0, 30);
}

}  // namespace corvane::tests
