#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>

#include "bench/ChildProcess.h"
#include "support/ScratchFolder.h"
#include "text/Cp1252.h"
#include "text/Text.h"
#include "vellio/HidBackend.h"

// Shows the first reader of a running corvane-bench to a program that it starts as its child, through the system's own
// way to HID devices, and ends with the child's status:
//
//   corvane-bench --device hid=yes[,KEY=VALUE]... -- umockdev-wrapper mocked-reader PROGRAM [ARGUMENT]...

namespace {

using namespace corvane;

constexpr int kPatience = 1000;  // ms for the bench to take a report

/// A hidraw device that this process and its children see. The reader's end of it is a byte stream of whole reports.
class MockedHidraw {
public:
    MockedHidraw() = default;
    ~MockedHidraw() { g_object_unref(bed_); }
    MockedHidraw(const MockedHidraw&) = delete;
    MockedHidraw& operator=(const MockedHidraw&) = delete;

    /// Makes the system tell its listeners, as unplug does. Throws std::runtime_error when the test bed refuses.
    void plug(const vellio::DeviceInfo& info) {
        info_ = info;
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
        if (descriptor_ < 0) return std::nullopt;
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
        text = replaceAll(text, "@MAKER@", toUtf8(info_.manufacturer));
        text = replaceAll(text, "@PRODUCT@", toUtf8(info_.name));
        text = replaceAll(text, "@SERIAL@", toUtf8(info_.serialNumber));
        return text;
    }

    vellio::DeviceInfo info_;
    UMockdevTestbed* bed_ = umockdev_testbed_new();
    fakes::ScratchFolder folder_;
    int plugged_ = 0;  // times
    int descriptor_ = -1;
    std::string pending_;
};

/// The child sees plugging as done or not begun, as with a real system.
template <class Change>
void whileStopped(const std::optional<bench::ChildProcess>& child, Change change) {
    if (child) child->signal(SIGSTOP);
    change();
    if (child) child->signal(SIGCONT);
}

/// Passes reports on in both directions as long as the child runs; its exit status.
int relay(const std::vector<std::string>& command) {
    const auto bench = vellio::makeBackend();
    MockedHidraw node;
    std::unique_ptr<vellio::HidDevice> reader;
    std::optional<bench::ChildProcess> child;
    for (vellio::Refusal refusal;;) {
        const auto readers = reader ? std::vector<vellio::DeviceInfo>() : bench->devices();
        if (!readers.empty() && (reader = bench->open(readers.front().path, refusal))) {
            whileStopped(child, [&] { node.plug(readers.front()); });
        }
        if (!child) child.emplace(command, bench::Variables{{"CORVANE_VELLIO", CORVANE_REAL_LIBRARY}});
        auto moved = vellio::Moved::notNow;
        HidReport report;
        while (reader && (moved = reader->read(report)) == vellio::Moved::done) node.send(report);
        for (auto next = node.receive(); next && moved != vellio::Moved::gone; next = node.receive()) {
            moved = reader->write(*next, kPatience);
        }
        if (moved == vellio::Moved::gone) {
            reader.reset();
            whileStopped(child, [&] { node.unplug(); });
        }
        pollfd entries[] = {{child->descriptor(), POLLIN, 0}, {node.descriptor(), POLLIN, 0}};
        ::poll(entries, 2, 1);
        if (entries[0].revents) return child->status();
    }
}

}  // namespace

int main(int argc, char** argv) try { return relay({argv + 1, argv + argc}); } catch (const std::exception& error) {
    std::fprintf(stderr, "mocked-reader: %s\n", error.what());
    return 125;
}
