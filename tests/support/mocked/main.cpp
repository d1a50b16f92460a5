#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <poll.h>
#include <signal.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

#include "models/Device.h"
#include "models/HidReader.h"
#include "models/PacedLine.h"
#include "support/mocked/MockedHidraw.h"
#include "text/Text.h"

// Shows a simulated HID reader with a device behind it to a program that it starts as its child, through the system's
// own way to HID devices. Run it under umockdev-wrapper:
//
//   umockdev-wrapper mocked-reader [--fault FAULT]... [--replug MS] [--compare IMAGE.hex] [--boot-baud RATE]
//       [--product TEXT] PROGRAM [ARGUMENT]...
//
// The child may write the lines "unplug" and "plug" to the descriptor named in CORVANE_MOCKED_READER; each is answered
// with a line when it is done. A fault that unplugs the device unplugs the reader, for good or for so many ms. Ends
// with the child's status, or 9 when the device's memory then differs from the image.

namespace {

using namespace corvane;

models::Micros nowMicros() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

struct Arguments {
    models::DeviceOptions device;
    models::HidReaderOptions reader;
    int replugAfter = -1;  // ms
    std::string image;
    std::vector<char*> program;
};

Arguments parse(int argc, char** argv) {
    Arguments arguments;
    int at = 1;
    for (; at + 1 < argc && std::strncmp(argv[at], "--", 2) == 0; at += 2) {
        const std::string option = argv[at];
        const char* const value = argv[at + 1];
        if (option == "--fault") {
            arguments.device.faults.add(std::string_view(value));
        } else if (option == "--replug") {
            arguments.replugAfter = std::atoi(value);
        } else if (option == "--boot-baud") {
            arguments.device.bootBaud = static_cast<std::uint32_t>(std::atoi(value));
        } else if (option == "--product") {
            arguments.reader.name = value;
        } else if (option == "--compare") {
            arguments.image = readFile(value);
        } else {
            throw std::runtime_error("unknown option " + option);
        }
    }
    arguments.program.assign(argv + at, argv + argc);
    if (arguments.program.empty()) throw std::runtime_error("no program to start");
    arguments.program.push_back(nullptr);
    return arguments;
}

/// The child, and the line on which it asks for plugging.
class Child {
public:
    explicit Child(std::vector<char*>& program) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) throw std::runtime_error("no line to the child");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(ends[0]);
            ::setenv("CORVANE_MOCKED_READER", std::to_string(ends[1]).c_str(), 1);
            ::execvp(program[0], program.data());
            std::perror(program[0]);
            ::_exit(127);
        }
        ::close(ends[1]);
        line_ = ends[0];
    }

    int line() const { return line_; }

    /// True when it has ended.
    bool hasEnded() { return ended_ || (ended_ = ::waitpid(pid_, &status_, WNOHANG) == pid_); }
    int status() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_); }

    /// What it asks for; empty when its end of the line is closed.
    std::string order() {
        char bytes[64];
        const auto count = ::read(line_, bytes, sizeof bytes);
        if (count <= 0) {
            ::close(line_);
            line_ = -1;  // poll leaves it alone then
        }
        return std::string(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    /// It sees plugging as done or not begun, as with a real system.
    void pause() const { ::kill(pid_, SIGSTOP); }
    void goOn() const { ::kill(pid_, SIGCONT); }

    void confirm() {
        if (::write(line_, "done\n", 5) < 0) std::perror("mocked reader");
    }

private:
    pid_t pid_ = -1;
    int line_ = -1;
    int status_ = 0;
    bool ended_ = false;
};

class Station {
public:
    explicit Station(const Arguments& arguments)
        : device_(arguments.device),
          reader_(line_, arguments.reader),
          node_(reader_.options()),
          replugAfter_(arguments.replugAfter) {
        node_.plug();
    }

    const models::Device& device() const { return device_; }

    void run(Child& child) {
        while (!child.hasEnded()) {
            pollfd entries[] = {{child.line(), POLLIN, 0}, {listens() ? node_.descriptor() : -1, POLLIN, 0}};
            ::poll(entries, 2, waitTime());
            if (entries[0].revents) obey(child);
            if (node_.isPlugged()) exchange();
            watchDevice(child);
        }
    }

private:
    bool listens() const { return reader_.accepts(nowMicros()); }

    int waitTime() const {
        constexpr int kLongest = 20;  // ms until the next look at the child
        const auto next = reader_.nextAt();
        if (!listens()) return 1;
        if (!next) return kLongest;
        return static_cast<int>(std::clamp<models::Micros>((*next - nowMicros() + 999) / 1000, 0, kLongest));
    }

    void exchange() {
        if (listens()) {
            if (const auto report = node_.receive()) reader_.hear(nowMicros(), *report);
        }
        while (const auto report = reader_.speak(nowMicros())) node_.send(*report);
    }

    void obey(Child& child) {
        const std::string order = child.order();
        if (order == "unplug\n" && node_.isPlugged()) unplug(child);
        if (order == "plug\n" && !node_.isPlugged()) plug(child);
        if (!order.empty()) child.confirm();
    }

    /// A device that a fault has unplugged takes the reader with it.
    void watchDevice(Child& child) {
        if (node_.isPlugged() && !device_.isPlugged()) {
            unplug(child);
            if (replugAfter_ >= 0) plugAt_ = nowMicros() + replugAfter_ * 1000LL;
        }
        if (plugAt_ && *plugAt_ <= nowMicros()) plug(child);
    }

    void unplug(Child& child) {
        child.pause();
        device_.unplug();
        node_.unplug();
        child.goOn();
    }

    void plug(Child& child) {
        plugAt_.reset();
        child.pause();
        device_.plugIn(nowMicros());
        reader_.restart();
        node_.plug();
        child.goOn();
    }

    models::Device device_;
    models::PacedLine line_{device_};
    models::HidReader reader_;
    fakes::MockedHidraw node_;
    int replugAfter_;
    std::optional<models::Micros> plugAt_;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        Arguments arguments = parse(argc, argv);
        ::signal(SIGPIPE, SIG_IGN);
        Station station(arguments);
        Child child(arguments.program);
        station.run(child);
        if (arguments.image.empty()) return child.status();
        const auto image = models::imageOf(arguments.image);
        std::printf("%s\n", models::comparison(station.device().flash(), image).c_str());
        const bool differs = models::firstDifference(station.device().flash(), image.memory).has_value();
        return child.status() ? child.status() : differs ? 9 : 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mocked-reader: %s\n", error.what());
        return 125;
    }
}
