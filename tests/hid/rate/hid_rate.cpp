// Programming through a HID reader of the bench beside the bare exchange of the same reports with it, both in reports
// that the reader takes a second. Not a test: times depend on the machine. Usage: bench_hid [RECORDS]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <signal.h>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include "bench/Bench.h"
#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/LinuxRuntime.h"
#include "ports/clsVellComm.h"
#include "protocol/HexProgrammer.h"
#include "support/RecordingFace.h"
#include "support/ScratchFolder.h"
#include "text/HidBench.h"
#include "text/HidReport.h"

namespace {

using namespace corvane;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 5;
constexpr char kRate[] = "4000000";  // baud, so that the reports and not the line behind them set the pace

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

std::string record(int number) {
    constexpr int kBytes = 16;
    const int address = number * kBytes & 0xFFFF;
    int sum = kBytes + (address >> 8) + (address & 0xFF);
    std::string text;
    const auto add = [&text](const char* format, int value) {
        char digits[16];
        std::snprintf(digits, sizeof digits, format, static_cast<unsigned>(value));
        text += digits;
    };
    add(":%02X", kBytes);
    add("%04X00", address);
    for (int i = 0; i < kBytes; ++i) {
        const int byte = (number * 7 + i) % 255;
        sum += byte;
        add("%02X", byte);
    }
    add("%02X", -sum & 0xFF);
    return text;
}

/// A bench in a process of its own, with one reader, HID1, and a boot loader behind it.
class BenchProcess {
public:
    explicit BenchProcess(const fakes::ScratchFolder& folder) : socket_(folder.at("config/Corvane/readers")) {
        const auto ready = folder.at("ready");
        process_ = ::fork();
        if (process_ == 0) {
            bench::Bench bench(bench::benchOptions({"--config-dir", folder.at("config"), "--ready-file", ready,
                                                    "--device", std::string("hid=yes,kind=boot,baud=") + kRate}));
            std::ostringstream report;
            ::_exit(bench.run(report));
        }
        for (int i = 0; i < 1000 && ::access(ready.c_str(), R_OK) != 0; ++i) ::poll(nullptr, 0, 10);
    }
    ~BenchProcess() {
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    BenchProcess(const BenchProcess&) = delete;
    BenchProcess& operator=(const BenchProcess&) = delete;

    const std::string& socket() const { return socket_; }

private:
    std::string socket_;
    pid_t process_ = -1;
};

/// Records a second, each in a report of its own and answered in one, through the program's own layers.
double programmingRate(const std::string& image, int records) {
    LinuxRuntime runtime;
    DlModuleLoader loader;
    VellIO control(runtime, loader, CORVANE_BENCH_LIBRARY);
    control.ReadProperties(true, {});
    clsVellComm port;
    port.Attach(&control, nullptr);
    port.NumberOfCommPorts();
    port.CommPort("HID1");
    port.Settings(std::string(kRate) + ",N,8,1");
    port.PortOpen(true);
    if (!port.PortOpen()) throw std::runtime_error("HID1 does not open: " + control.openFailure());
    fakes::RecordingFace face;
    DeviceSession session(runtime, face, port);
    HexProgrammer programmer(session, face);
    const auto start = Clock::now();
    const bool isDone = programmer.ISP_Program(image);
    const double seconds = secondsSince(start);
    control.Terminate();
    port.Attach(nullptr, nullptr);
    if (!isDone) throw std::runtime_error(face.log);
    return (records + 1) / seconds;
}

/// The same exchange with nothing between: a report is written, and the next one as soon as the answer is there.
class Echo {
public:
    explicit Echo(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0), "socket") {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) fail();
        exchange("Obench:1");
    }

    double rate(int records) {
        const auto start = Clock::now();
        for (int i = 0; i < records; ++i) {
            const auto report = hidReportOf({HidReportId::data, false, bytesOf(record(i) + "\r")});
            exchange("R" + std::string(report.begin(), report.end()));
        }
        return records / secondsSince(start);
    }

private:
    [[noreturn]] static void fail() { throw std::runtime_error("the bench does not answer"); }

    void exchange(const std::string& packet) {
        char answer[hidbench::kLargestPacket];
        pollfd readable{socket_.get(), POLLIN, 0};
        if (::send(socket_.get(), packet.data(), packet.size(), MSG_NOSIGNAL) < 0) fail();
        if (::poll(&readable, 1, 5000) != 1 || ::recv(socket_.get(), answer, sizeof answer, 0) <= 0) fail();
    }

    bench::Descriptor socket_;
};

}  // namespace

int main(int argc, char** argv) {
    const int records = argc > 1 ? std::max(1, std::atoi(argv[1])) : 2000;
    try {
        const fakes::ScratchFolder folder;
        std::string image;
        for (int i = 0; i < records; ++i) image += record(i + 1) + "\n";
        const auto path = folder.file("image.hex", image + ":00000001FF\n");
        const BenchProcess bench(folder);
        ::setenv(hidbench::kSocketVariable, bench.socket().c_str(), 1);
        std::vector<double> programming, echo;
        for (int i = 0; i < kRounds; ++i) {
            programming.push_back(programmingRate(path, records));
            echo.push_back(Echo(bench.socket()).rate(records));  // at the rate that programming has left there
        }
        std::sort(programming.begin(), programming.end());
        std::sort(echo.begin(), echo.end());
        const double x = programming[kRounds / 2], y = echo[kRounds / 2];
        std::printf("reports/s programming %.0f, echo %.0f, ratio %.2f\n", x, y, x / y);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_hid: %s\n", error.what());
        return 1;
    }
}
