#include <csignal>
#include <cstdio>
#include <iostream>
#include <optional>

#include "bench/BenchOptions.h"
#include "bench/ChildProcess.h"
#include "bench/Loop.h"
#include "bench/Outlet.h"
#include "bench/Report.h"
#include "support/mocked/MockedHidraw.h"
#include "text/Text.h"

// Shows a simulated HID reader with a device behind it to a program that it starts as its child, through the system's
// own way to HID devices; otherwise as corvane-bench does. Run it under umockdev-wrapper:
//
//   umockdev-wrapper mocked-reader --device hid=yes[,KEY=VALUE]... [--image IMAGE.hex --verify] -- PROGRAM
//   [ARGUMENT]...
//
// Ends with the child's status, or 10 when the device's memory then differs from the image.

namespace {

using namespace corvane;
using bench::Micros;

class Station : public bench::Outlet, public bench::Timed {
public:
    Station(bench::Loop& loop, const bench::DeviceSpec& spec) : Outlet(spec), loop_(loop) {
        node_.plug();
        loop_.add(*this);
    }
    ~Station() override { loop_.remove(*this); }

    int run(const std::vector<std::string>& command) {
        child_.emplace(command, bench::Variables());
        loop_.watch(child_->descriptor(), [this] { loop_.stop(); });
        loop_.run();
        return child_->status();
    }

    std::string path() const override { return {}; }

    std::optional<Micros> nextAt() const override {
        if (!node_.isPlugged()) return comesBackAt_;
        if (!device().isPlugged()) return 0;
        const auto next = reader_.nextAt();
        if (isListening_) return next;
        return std::min(next.value_or(reader_.acceptsAt()), reader_.acceptsAt());
    }

    void act(Micros now) override {
        if (!node_.isPlugged()) {
            comesBackAt_.reset();
            device().plugIn(now);
            reader_.restart();
            change(&fakes::MockedHidraw::plug);
        } else if (!device().isPlugged()) {  // a fault has unplugged it, and the reader with it
            listen(false);
            change(&fakes::MockedHidraw::unplug);
            if (spec().replugMs) comesBackAt_ = now + *spec().replugMs * 1000LL;
        } else {
            while (const auto report = reader_.speak(now)) node_.send(*report);
            listen(reader_.accepts(now));
        }
    }

private:
    /// The child sees plugging as done or not begun, as with a real system.
    void change(void (fakes::MockedHidraw::*what)()) {
        child_->signal(SIGSTOP);
        (node_.*what)();
        child_->signal(SIGCONT);
    }

    void listen(bool listens) {
        if (listens == isListening_) return;
        isListening_ = listens;
        if (!listens) return loop_.unwatch(node_.descriptor());
        loop_.watch(node_.descriptor(), [this] {
            if (const auto report = node_.receive()) reader_.hear(loop_.now(), *report);
            listen(reader_.accepts(loop_.now()));
        });
    }

    bench::Loop& loop_;
    models::HidReader reader_{line(), spec().reader};
    fakes::MockedHidraw node_{spec().reader};
    bool isListening_ = false;
    std::optional<Micros> comesBackAt_;
    std::optional<bench::ChildProcess> child_;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        const auto options = bench::benchOptions({argv + 1, argv + argc});
        bench::Loop loop;
        Station station(loop, options.devices.at(0));
        const int status = station.run(options.command);
        if (!options.verifies) return status;
        const auto verdict = bench::verdictOn(station.device(), models::imageOf(readFile(options.image)));
        std::cout << verdict.text << std::endl;
        return verdict.kind == bench::Verdict::Kind::equal ? status : 10;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mocked-reader: %s\n", error.what());
        return 125;
    }
}
