#include "bench/Bench.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sstream>

#include "support/ScratchFolder.h"

namespace corvane::bench {
namespace {

using fakes::ScratchFolder;

/// Erases, programs one record and the end, and reads the three answers.
constexpr const char* kUpdate =
    "exec 3<>$(sed -n s/COM4=//p $XDG_CONFIG_HOME/Corvane/serialcomm.conf);"
    "printf '\\002X\\r:0100100033BC\\r:00000001FF\\r' >&3; head -c 3 <&3 >/dev/null; exit $STATUS";

struct Run {
    int status;
    std::string report;
};

Run runBench(const std::vector<std::string>& arguments) {
    Bench bench(benchOptions(arguments));
    std::ostringstream report;
    const int status = bench.run(report);
    return {status, report.str()};
}

TEST(Bench, RunsACommandAndJudgesTheMemory) {
    ScratchFolder scratch;
    const auto right = scratch.file("right.hex", ":0100100033BC\n:00000001FF\n");
    const auto wrong = scratch.file("wrong.hex", ":020000001122CB\n:00000001FF\n");
    const std::string silent = "COM1: 0 requests, 0 erases, 0 records, 0 restarts; heard 0 bytes, gave 0 replies\n";
    const std::string updated =
        silent +
        "COM4: 0 requests, 1 erase, 2 records, 0 restarts; heard 29 bytes, gave 3 replies; in its boot loader\n";
    const struct {
        std::string image, command;
        int status;
        std::string report;
    } rows[] = {
        {right, "kill -9 $$", 10,
         silent +
             "COM4: 0 requests, 0 erases, 0 records, 0 restarts; heard 0 bytes, gave 0 replies; in its boot loader\n"
             "The command ended with status 137.\nCOM1: memory untouched\nCOM4: memory untouched\n"},
        {right, std::string("STATUS=5;") + kUpdate, 5,
         updated + "The command ended with status 5.\nCOM1: memory untouched\nCOM4: memory equals image\n"},
        {wrong, std::string("STATUS=0;") + kUpdate, 10,
         updated + "COM1: memory untouched\n"
                   "COM4: memory differs at 0x00000: holds 0xFF, image 0x11; differing cells: 3\n"},
    };
    for (const auto& row : rows) {
        const auto run = runBench({"--device", "kind=TarnPlus", "--device", "port=4,kind=boot,baud=9600", "--image",
                                   row.image, "--verify", "--transcript", scratch.at("lines"), "--ready-file",
                                   scratch.at("ready"), "--", "/bin/sh", "-c", row.command});
        EXPECT_EQ(run.status, row.status);
        EXPECT_EQ(run.report, row.report);
    }
    std::istringstream lines(ScratchFolder::content(scratch.at("lines")));
    std::string port, moment, side, rate, bytes, toDevice, toHost;  // a line has what was carried at a time
    while (lines >> port >> moment >> side >> rate >> bytes) {
        EXPECT_EQ(port + rate, "COM49600");
        (side == ">" ? toDevice : toHost) += bytes;
    }
    EXPECT_EQ(toDevice, "\\x02X\\x0D:0100100033BC\\x0D:00000001FF\\x0D");
    EXPECT_EQ(toHost, "\\x06\\x06\\x06");
    EXPECT_EQ(ScratchFolder::content(scratch.at("ready")).rfind("COM1=/dev/pts/", 0), 0U);
}

TEST(Bench, HearsWhatACommandWroteLast) {
    Loop late;
    const Descriptor any(::open("/dev/zero", O_RDONLY), "/dev/zero");
    bool isHeard = false;
    late.watch(any.get(), [&] { isHeard = true; });
    late.run(late.now() - 1);
    EXPECT_TRUE(isHeard) << "what is there is heard, however busy the machine was until now";
    const auto run = runBench({"--device", "port=4,kind=boot,baud=1200", "--", "/bin/sh", "-c",
                               "exec 3<>$(sed -n s/COM4=//p $XDG_CONFIG_HOME/Corvane/serialcomm.conf); stty 1200 <&3;"
                               "printf '%40s\\002R\\r' >&3"});
    EXPECT_EQ(run.report,
              "COM4: 0 requests, 0 erases, 0 records, 1 restart; heard 43 bytes, gave 0 replies; in its boot loader\n");
}

TEST(Bench, GivesACommandADataFolderAndShowsItItsReadersAndNoOthers) {
    ScratchFolder scratch;
    const char* const print =
        "exec >$0; echo \"${XDG_DATA_HOME#$XDG_CONFIG_HOME} $CORVANE_VELLIO $CORVANE_BENCH_SOCKET\"; test -z "
        "\"$CORVANE_BENCH_SOCKET\" || test -S \"$CORVANE_BENCH_SOCKET\"";
    const std::string library = std::string(CORVANE_BIN_DIR) + "/bench/VellIO.so";
    const auto socket = scratch.at("c") + "/Corvane/readers";
    for (const bool hasReaders : {true, false}) {
        const std::string hid = hasReaders ? "hid=yes" : "";
        EXPECT_EQ(runBench({"--device", hid, "--device", "", "--device", hid, "--config-dir", scratch.at("c"),
                            "--ready-file", scratch.at("ready"), "--", "/bin/sh", "-c", print, scratch.at("printed")})
                      .status,
                  0);
        EXPECT_EQ(ScratchFolder::content(scratch.at("printed")),
                  "/data " + library + " " + (hasReaders ? socket : "") + "\n");
        const auto ready = ScratchFolder::content(scratch.at("ready"));
        EXPECT_EQ(ready.starts_with("HID1=" + socket + ".1\nCOM1=/dev/p"), hasReaders) << ready;
        EXPECT_EQ(ready.ends_with("HID2=" + socket + ".2\nCORVANE_VELLIO=" + library +
                                  "\nCORVANE_BENCH_SOCKET=" + socket + "\n"),
                  hasReaders);
    }
}

TEST(Bench, SaysWhatCannotBeHad) {
    EXPECT_THROW(Bench(benchOptions({"--device", "", "--image", "/nowhere.hex"})), std::runtime_error);
    EXPECT_THROW(Bench(benchOptions({"--device", "", "--transcript", "/nowhere/x"})), std::runtime_error);
    EXPECT_THROW(runBench({"--device", "", "--", "/nowhere/program"}), std::runtime_error);
}

}  // namespace
}  // namespace corvane::bench
