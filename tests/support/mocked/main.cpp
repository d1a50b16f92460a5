#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>

#include "bench/BenchOptions.h"
#include "bench/ChildProcess.h"
#include "bench/Loop.h"
#include "bench/Outlet.h"
#include "bench/Report.h"
#include "support/ScratchFolder.h"
#include "text/Cp1252.h"
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

/// A hidraw device that this process and its children see. The reader's end of it is a byte stream of whole reports.
class MockedHidraw {
public:
    explicit MockedHidraw(const models::HidReaderOptions& options) : options_(options), bed_(umockdev_testbed_new()) {}
    ~MockedHidraw() { g_object_unref(bed_); }
    MockedHidraw(const MockedHidraw&) = delete;
    MockedHidraw& operator=(const MockedHidraw&) = delete;

    /// Makes the system tell its listeners, as unplug does. Throws std::runtime_error when the test bed refuses.
    void plug() {
        ++plugged_;  // the test bed keeps the far end of a node that has gone, so each one gets a name of its own
        const auto ioctls = folder_.file("ioctls", filled("reader.ioctl"));
        const bool isShown = umockdev_testbed_add_from_string(bed_, filled("reader.umockdev").c_str(), nullptr) &&
                             umockdev_testbed_load_ioctl(bed_, nullptr, ioctls.c_str(), nullptr);
        descriptor_ = isShown ? umockdev_testbed_get_dev_fd(bed_, ("/dev/" + name()).c_str()) : -1;
        if (descriptor_ < 0) throw std::runtime_error("the mocked device has no far end");
        ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) | O_NONBLOCK);
        pending_.clear();
        // Stays open until the end: while no program has the node open its far end would tell of a hang-up without end,
        // and a terminal whose number is used again is one that the test bed knows already and fails on.
        ::ioctl(descriptor_, TIOCGPTPEER, O_RDWR | O_NOCTTY);
    }

    void unplug() {
        ::close(std::exchange(descriptor_, -1));
        const std::string usb = "/sys/devices/pci0000:00/usb1/1-1", interface = usb + "/1-1:1.0";
        const std::string hid = interface + "/0003:1209:0005.0001", hidraw = hid + "/hidraw/" + name();
        umockdev_testbed_uevent(bed_, hidraw.c_str(), "remove");
        for (const auto& path : {hidraw, hid, interface, usb}) umockdev_testbed_remove_device(bed_, path.c_str());
    }

    /// The reader's end; -1 while it is unplugged.
    int descriptor() const { return descriptor_; }

    /// The next whole output report; nothing while there is none.
    std::optional<HidReport> receive() {
        HidReport report{};
        char bytes[kHidReportSize];
        const auto count = ::read(descriptor_, bytes, kHidReportSize - pending_.size());
        if (count > 0) pending_.append(bytes, static_cast<std::size_t>(count));
        if (pending_.size() < kHidReportSize) return std::nullopt;
        std::copy(pending_.begin(), pending_.end(), report.begin());
        pending_.clear();
        return report;
    }

    void send(const HidReport& report) const {
        // The far end's buffer holds many reports; a program that takes none for so long loses some, as with a real
        // driver.
        if (::write(descriptor_, report.data(), report.size()) < 0) std::perror("mocked reader");
    }

private:
    std::string name() const { return "hidraw" + std::to_string(plugged_); }

    /// A file of this folder with what is particular to the node.
    std::string filled(const char* file) const {
        std::string text = readFile(CORVANE_MOCKED_FOLDER + std::string("/") + file);
        text = replaceAll(text, "@NODE@", name());
        text = replaceAll(text, "@MAKER@", toUtf8(options_.manufacturer));
        text = replaceAll(text, "@PRODUCT@", toUtf8(options_.name));
        text = replaceAll(text, "@SERIAL@", toUtf8(options_.serialNumber));
        return text;
    }

    models::HidReaderOptions options_;
    UMockdevTestbed* bed_;
    fakes::ScratchFolder folder_;
    int plugged_ = 0;  // times
    int descriptor_ = -1;
    std::string pending_;
};

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
        if (node_.descriptor() < 0) return comesBackAt_;
        if (!device().isPlugged()) return 0;
        const auto next = reader_.nextAt();
        if (isListening_) return next;
        return std::min(next.value_or(reader_.acceptsAt()), reader_.acceptsAt());
    }

    void act(Micros now) override {
        if (node_.descriptor() < 0) {
            comesBackAt_.reset();
            device().plugIn(now);
            reader_.restart();
            change(&MockedHidraw::plug);
        } else if (!device().isPlugged()) {  // a fault has unplugged it, and the reader with it
            listen(false);
            change(&MockedHidraw::unplug);
            if (spec().replugMs) comesBackAt_ = now + *spec().replugMs * 1000LL;
        } else {
            while (const auto report = reader_.speak(now)) node_.send(*report);
            listen(reader_.accepts(now));
        }
    }

private:
    /// The child sees plugging as done or not begun, as with a real system.
    void change(void (MockedHidraw::*what)()) {
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
    MockedHidraw node_{spec().reader};
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
