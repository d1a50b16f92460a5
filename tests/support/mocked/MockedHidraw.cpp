#include "support/mocked/MockedHidraw.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <stdexcept>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>

#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane::fakes {
namespace {

/// A file of this folder with what is particular to the node that comes next.
std::string filled(const char* file, const std::map<std::string, std::string>& values) {
    std::string text = readFile(CORVANE_MOCKED_FOLDER + std::string("/") + file);
    for (const auto& [name, value] : values) {
        for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
            text.replace(at, name.size(), value);
        }
    }
    return text;
}

void check(GError* error, const char* what) {
    if (!error) return;
    const std::string message = std::string(what) + ": " + error->message;
    g_error_free(error);
    throw std::runtime_error(message);
}

}  // namespace

MockedHidraw::MockedHidraw(const models::HidReaderOptions& options) : options_(options), bed_(umockdev_testbed_new()) {}

MockedHidraw::~MockedHidraw() {
    if (descriptor_ >= 0) ::close(descriptor_);
    for (const int terminal : kept_) ::close(terminal);
    g_object_unref(bed_);
}

void MockedHidraw::plug() {
    ++plugged_;  // the test bed keeps the far end of a node that has gone, so each one gets a name of its own
    const std::map<std::string, std::string> values{{"@NODE@", name()},
                                                    {"@MAKER@", toUtf8(options_.manufacturer)},
                                                    {"@PRODUCT@", toUtf8(options_.name)},
                                                    {"@SERIAL@", toUtf8(options_.serialNumber)}};
    const auto ioctls = folder_.file("ioctls", filled("reader.ioctl", values));
    GError* error = nullptr;
    umockdev_testbed_add_from_string(bed_, filled("reader.umockdev", values).c_str(), &error);
    check(error, "the mocked device");
    umockdev_testbed_load_ioctl(bed_, nullptr, ioctls.c_str(), &error);
    check(error, "its ioctls");
    descriptor_ = umockdev_testbed_get_dev_fd(bed_, node().c_str());
    if (descriptor_ < 0) throw std::runtime_error("the mocked device has no far end");
    ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) | O_NONBLOCK);
    pending_.clear();
    // Until the end: while no program has the node open its far end would tell of a hang-up without end, and a terminal
    // whose number is used again is one that the test bed knows already and fails on.
    kept_.push_back(::ioctl(descriptor_, TIOCGPTPEER, O_RDWR | O_NOCTTY));
}

void MockedHidraw::unplug() {
    ::close(descriptor_);
    descriptor_ = -1;
    const std::string usb = "/sys/devices/pci0000:00/usb1/1-1", interface = usb + "/1-1:1.0";
    const std::string hid = interface + "/0003:1209:0005.0001", hidraw = hid + "/hidraw/" + name();
    umockdev_testbed_uevent(bed_, hidraw.c_str(), "remove");
    for (const auto& path : {hidraw, hid, interface, usb}) umockdev_testbed_remove_device(bed_, path.c_str());
}

std::optional<HidReport> MockedHidraw::receive() {
    HidReport report{};
    char bytes[kHidReportSize];
    const auto count = ::read(descriptor_, bytes, kHidReportSize - pending_.size());
    if (count > 0) pending_.append(bytes, static_cast<std::size_t>(count));
    if (pending_.size() < kHidReportSize) return std::nullopt;
    std::copy(pending_.begin(), pending_.end(), report.begin());
    pending_.clear();
    return report;
}

void MockedHidraw::send(const HidReport& report) {
    // The far end's buffer holds many reports; a program that takes none for so long loses some, as with a real driver.
    if (::write(descriptor_, report.data(), report.size()) < 0) std::perror("mocked reader");
}

}  // namespace corvane::fakes
