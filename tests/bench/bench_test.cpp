#include "bench/Bench.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "bench/OpenWatch.h"
#include "bench/Pty.h"
#include "support/ScratchFolder.h"

namespace corvane::bench::tests {

using fakes::ScratchFolder;

TEST(BenchOptions, ReadDevices) {
    const auto options = benchOptions(
        {"--device", "kind=tarn,baud=9600,boot-baud=57600,version=Größe\\, 1,version-nul=no",
         "--device=port=1,kind=boot,in-boot=yes,password=p\\\\w,wrong-rate=garbage,fault=nak@5x2,fault=unplug",
         "--device", "hid=yes,reader=Größer", "--device", "hid=yes", "--device", "hid=no", "--setting",
         "FTP/Server=a=b"});
    std::string names;
    for (const auto& device : options.devices) names += (device.isReader ? "H" : "C") + std::to_string(device.port);
    EXPECT_EQ(names, "C2C1H1H2C3") << "the lowest ones that nobody asks for";
    const auto &first = options.devices[0].device, &second = options.devices[1].device;
    EXPECT_EQ(first.baud + first.bootBaud, 9600 + 57600U);
    EXPECT_EQ(first.version + (first.versionEndsInNul ? "!" : ""), "Gr\xF6\xDF\x65, 1");
    EXPECT_TRUE(second.startsInBoot && second.wrongRate == models::WrongRate::garbage);
    EXPECT_EQ(second.password, "p\\w");
    EXPECT_TRUE(second.faults.has(models::FaultKind::nak) && second.faults.has(models::FaultKind::unplug));
    EXPECT_EQ(options.devices[2].reader.name, "Gr\xF6\xDF\x65r");
    EXPECT_NE(options.devices[2].reader.serialNumber, options.devices[3].reader.serialNumber);
    const auto& setting = options.settings.at(0);
    EXPECT_EQ(setting.section + "|" + setting.key + "|" + setting.value, "FTP|Server|a=b");
}

TEST(BenchOptions, SayWhatIsWrong) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "no --device"},
        {{"--devise", "x"}, "unknown option \"--devise\""},
        {{"--device"}, "--device needs a value"},
        {{"--verify=yes", "--device", ""}, "--verify takes no value"},
        {{"--device", "", "--verify"}, "--verify needs an --image"},
        {{"--device", "", "--"}, "no command behind \"--\""},
        {{"--device", "port=2", "--device", "port=2"}, "two devices on COM2"},
        {{"--device", "", "--setting", "Server=x/y"}, "--setting is SECTION/KEY=VALUE, not \"Server=x/y\""},
        {{"--device", "speed=1"}, "device: \"speed\" is no key"},
        {{"--device", "baud=19200,baud=1"}, "device: \"baud\" is given twice"},
        {{"--device", "baud=19k"}, "device: \"baud\" takes a number from 50 to 4000000, not \"19k\""},
        {{"--device", "kind=lamp"}, "device: \"kind\" is TarnPlus, Tarn, boot, silent, babbling, not \"lamp\""},
        {{"--device", "reader=K"}, "device: \"reader\" needs hid=yes"},
        {{"--device", "hid=yes,reader=a\tb"}, "device: \"reader\" takes up to 126 printable characters"},
        {{"--device", "fault=nak@x"}, "fault \"nak@x\": the place \"x\" is no number"},
    };
    for (const auto& [arguments, complaint] : rows) {
        try {
            benchOptions(arguments);
            ADD_FAILURE() << complaint;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), complaint);
        }
    }
}

/// Exit status and report.
std::pair<int, std::string> run(const std::vector<std::string>& arguments) {
    Bench bench(benchOptions(arguments));
    std::ostringstream report;
    const int status = bench.run(report);
    return {status, report.str()};
}

TEST(Bench, RunsACommandAndJudgesTheMemory) {
    // Erases, programs one record and the end, and reads the three answers.
    const std::string update =
        "exec 3<>$(sed -n s/COM4=//p $XDG_CONFIG_HOME/Corvane/serialcomm.conf);"
        "printf '\\002X\\r:0100100033BC\\r:00000001FF\\r' >&3; head -c 3 <&3 >/dev/null; exit $STATUS";
    ScratchFolder scratch;
    const auto right = scratch.file("right.hex", ":0100100033BC\n:00000001FF\n");
    const auto wrong = scratch.file("wrong.hex", ":020000001122CB\n:00000001FF\n");
    const std::string silent = "COM1: 0 requests, 0 erases, 0 records, 0 restarts; heard 0 bytes, gave 0 replies\n";
    const std::string updated =
        silent +
        "COM4: 0 requests, 1 erase, 2 records, 0 restarts; heard 29 bytes, gave 3 replies; in its boot loader\n";
    const std::tuple<std::string, std::string, int, std::string> rows[] = {
        {right, "kill -9 $$", 10,
         silent +
             "COM4: 0 requests, 0 erases, 0 records, 0 restarts; heard 0 bytes, gave 0 replies; in its boot loader\n"
             "The command ended with status 137.\nCOM1: memory untouched\nCOM4: memory untouched\n"},
        {right, "STATUS=5;" + update, 5,
         updated + "The command ended with status 5.\nCOM1: memory untouched\nCOM4: memory equals image\n"},
        {wrong, "STATUS=0;" + update, 10,
         updated + "COM1: memory untouched\n"
                   "COM4: memory differs at 0x00000: holds 0xFF, image 0x11; differing cells: 3\n"},
    };
    for (const auto& [image, command, status, report] : rows) {
        EXPECT_EQ(run({"--device", "kind=TarnPlus", "--device", "port=4,kind=boot,baud=9600", "--image", image,
                       "--verify", "--transcript", scratch.at("lines"), "--", "/bin/sh", "-c", command}),
                  std::pair(status, report));
    }
    std::istringstream lines(ScratchFolder::content(scratch.at("lines")));
    std::string port, moment, side, rate, bytes, toDevice, toHost;  // a line has what was carried at a time
    while (lines >> port >> moment >> side >> rate >> bytes) (side == ">" ? toDevice : toHost) += bytes;
    EXPECT_EQ(port + rate + toDevice, "COM49600\\x02X\\x0D:0100100033BC\\x0D:00000001FF\\x0D");
    EXPECT_EQ(toHost, "\\x06\\x06\\x06");
}

TEST(Bench, HearsWhatACommandWroteLast) {
    Loop late;
    const Descriptor any(::open("/dev/zero", O_RDONLY), "/dev/zero");
    bool isHeard = false;
    late.watch(any.get(), [&] { isHeard = true; });
    late.run(late.now() - 1);
    EXPECT_TRUE(isHeard) << "what is there is heard, however busy the machine was until now";
    const auto report = run({"--device", "port=4,kind=boot,baud=1200", "--", "/bin/sh", "-c",
                             "exec 3<>$(sed -n s/COM4=//p $XDG_CONFIG_HOME/Corvane/serialcomm.conf); stty 1200 <&3;"
                             "printf '%40s\\002R\\r' >&3"});
    EXPECT_EQ(report.second,
              "COM4: 0 requests, 0 erases, 0 records, 1 restart; heard 43 bytes, gave 0 replies; in its boot loader\n");
}

TEST(Bench, GivesACommandADataFolderAndShowsItItsReadersAndNoOthers) {
    ScratchFolder scratch;
    const char* const print =
        "exec >$0; echo \"${XDG_DATA_HOME#$XDG_CONFIG_HOME} $CORVANE_VELLIO $CORVANE_BENCH_SOCKET\"";
    const std::string library = std::string(CORVANE_BIN_DIR) + "/bench/VellIO.so",
                      socket = scratch.at("c/Corvane/readers");
    for (const std::string hid : {"hid=yes", ""}) {
        run({"--device", hid, "--device", "", "--device", hid, "--config-dir", scratch.at("c"), "--ready-file",
             scratch.at("ready"), "--", "/bin/sh", "-c", print, scratch.at("printed")});
        EXPECT_EQ(ScratchFolder::content(scratch.at("printed")),
                  "/data " + library + " " + (hid.empty() ? "" : socket) + "\n");
        const auto ready = ScratchFolder::content(scratch.at("ready"));
        EXPECT_EQ(ready.starts_with("HID1=" + socket + ".1\nCOM1=/dev/p"), !hid.empty()) << ready;
        EXPECT_EQ(ready.ends_with("HID2=" + socket + ".2\nCORVANE_VELLIO=" + library +
                                  "\nCORVANE_BENCH_SOCKET=" + socket + "\n"),
                  !hid.empty());
    }
    EXPECT_THROW(run({"--device", "", "--image", "/nowhere.hex"}), std::runtime_error);
    EXPECT_THROW(run({"--device", "", "--transcript", "/nowhere/x"}), std::runtime_error);
    EXPECT_THROW(run({"--device", "", "--", "/nowhere/program"}), std::runtime_error);
}

unsigned modeOf(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST(ConfigFolder, ShowsTheBenchAloneAndLeavesSomebodysOwnConfigurationAlone) {
    ScratchFolder scratch;
    const auto map = scratch.at("config/Corvane/serialcomm.conf"), settings = scratch.at("config/Corvane/Corvane.conf");
    const ConfigFolder folder(scratch.at("config"));
    folder.writePorts({{3, "/dev/pts/7"}, {12, "/dev/pts/9"}});
    folder.writePorts({{12, "/dev/pts/9"}});
    folder.writeSettings({{"FTP", "OffLine", "True"}, {"Query", "LastROM", "a;b"}, {"FTP", "Proxy", ""}});
    EXPECT_TRUE(ScratchFolder::content(map).ends_with(" only.\nauto=off\nCOM12=/dev/pts/9\n"));
    EXPECT_EQ(ScratchFolder::content(settings), "[FTP]\nKeyring=False\nOffLine=True\nProxy=\n[Query]\nLastROM=a;b\n");
    EXPECT_EQ(modeOf(scratch.at("config")) + modeOf(map) + modeOf(settings), 0700U + 0600 + 0600);
    const ConfigFolder again(scratch.at("config"));  // which is its own, so nothing is thrown
    auto temporary = std::make_unique<ConfigFolder>("");
    const auto path = temporary->path();
    EXPECT_EQ(modeOf(path), 0700U);
    temporary.reset();
    EXPECT_EQ(modeOf(path), 0U);
    for (const auto* name : {"Corvane/serialcomm.conf", "Corvane/Corvane.conf"}) {
        ScratchFolder somebodys;
        const auto file = somebodys.file(name, "COM1=/dev/ttyUSB0\n");
        EXPECT_THROW(ConfigFolder(somebodys.path()), std::runtime_error) << name;
        EXPECT_EQ(ScratchFolder::content(file), "COM1=/dev/ttyUSB0\n");
    }
}

std::optional<Descriptor> opened(const Pty& pty) {
    return std::optional<Descriptor>(std::in_place, open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK), "port");
}

TEST(Pty, IsAsNewForTheNextProgram) {
    Pty pty;
    auto port = opened(pty);
    ioctl(port->get(), TIOCEXCL);
    pty.write(Bytes{'o', 'l', 'd'});
    port.reset();
    pty.release();
    port = opened(pty);
    pty.discardUnread();
    int isExclusive = -1;
    ioctl(port->get(), TIOCGEXCL, &isExclusive);
    EXPECT_EQ(isExclusive, 0);
    pty.write(Bytes{'n', 'e', 'w'});
    pollfd readable{port->get(), POLLIN, 0};
    poll(&readable, 1, 10000);
    char buffer[8];
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(::read(port->get(), buffer, sizeof buffer))), "new");
}

TEST(OpenWatch, TellsWhoComesAndGoes) {
    Pty pty;
    OpenWatch watch;
    std::string told;
    watch.watch(pty.path(), [&](bool isHeld) { told += isHeld ? "+" : "-"; });
    const auto taken = [&] {
        watch.take();
        return std::exchange(told, "");
    };
    EXPECT_EQ(taken(), "") << "the bench itself does not count";
    auto first = opened(pty);
    EXPECT_EQ(taken(), "+");
    auto second = opened(pty);
    first.reset();
    EXPECT_EQ(taken(), "");
    second.reset();
    second = opened(pty);
    EXPECT_EQ(taken(), "-+");
}

}  // namespace corvane::bench::tests
