#include "support/mocked/MockedHidraw.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>

namespace corvane::fakes {
namespace {

constexpr char kUsb[] = "/devices/pci0000:00/usb1/1-1";
constexpr char kInterface[] = "/devices/pci0000:00/usb1/1-1/1-1:1.0";

/// Vendor-defined usage page; 63 bytes in and out with the report IDs 1 to 3, and a feature report 4.
constexpr std::uint8_t kDescriptor[] = {
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01,                    // usage page, usage, application collection
    0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x3F,        // bytes, 63 of them
    0x85, 0x01, 0x09, 0x01, 0x81, 0x02, 0x09, 0x01, 0x91, 0x02,  // 1: data
    0x85, 0x02, 0x09, 0x02, 0x81, 0x02, 0x09, 0x02, 0x91, 0x02,  // 2: control channel
    0x85, 0x03, 0x09, 0x03, 0x81, 0x02, 0x09, 0x03, 0x91, 0x02,  // 3: line states
    0x85, 0x04, 0x09, 0x04, 0xB1, 0x02, 0xC0};                   // 4: feature

std::string hex(const std::uint8_t* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
        text += digits;
    }
    return text;
}

/// What the driver answers about the descriptor: its length as 4 bytes, the lowest first, and the descriptor.
std::string ioctlText(const std::string& node) {
    const std::uint8_t length[] = {sizeof kDescriptor, 0, 0, 0};
    const std::string size = hex(length, sizeof length);
    return "@DEV " + node + "\nHIDIOCGRDESCSIZE 0 " + size + "\nHIDIOCGRDESC 0 " + size +
           hex(kDescriptor, sizeof kDescriptor) + "\n";
}

void check(GError* error, const char* what) {
    if (!error) return;
    const std::string message = std::string(what) + ": " + error->message;
    g_error_free(error);
    throw std::runtime_error(message);
}

}  // namespace

MockedHidraw::MockedHidraw(const models::HidReaderOptions& options)
    : options_(options), bed_(umockdev_testbed_new()), ioctls_("/tmp/corvane-ioctls-XXXXXX") {
    const int file = ::mkstemp(ioctls_.data());
    if (file < 0) throw std::runtime_error("no ioctl file");
    ::close(file);
}

MockedHidraw::~MockedHidraw() {
    if (descriptor_ >= 0) ::close(descriptor_);
    for (const int terminal : kept_) ::close(terminal);
    g_object_unref(bed_);
    ::unlink(ioctls_.c_str());
}

std::string MockedHidraw::hidPath() const {
    char node[32];
    std::snprintf(node, sizeof node, "/0003:%04X:%04X.0001", options_.vendor, options_.product);
    return kInterface + std::string(node);
}

std::string MockedHidraw::description() const {
    char ids[64], number[32];
    std::snprintf(ids, sizeof ids, "0003:%08X:%08X", options_.vendor, options_.product);
    std::snprintf(number, sizeof number, "%x/%x/100", options_.vendor, options_.product);
    const std::string hid = hidPath();
    return std::string("P: ") + hid + "/hidraw/" + name() + "\nN: " + name() + "\nE: DEVNAME=" + node() +
           "\nE: SUBSYSTEM=hidraw\nE: MAJOR=240\nE: MINOR=0\nA: dev=240:0\nL: device=../../../" +
           hid.substr(hid.rfind('/') + 1) + "\n\nP: " + hid + "\nE: DRIVER=hid-generic\nE: HID_ID=" + ids +
           "\nE: HID_NAME=" + options_.manufacturer + " " + options_.name +
           "\nE: HID_PHYS=usb-1/input0\nE: HID_UNIQ=" + options_.serialNumber +
           "\nE: SUBSYSTEM=hid\nH: report_descriptor=" + hex(kDescriptor, sizeof kDescriptor) + "\n\nP: " + kInterface +
           "\nE: DEVTYPE=usb_interface\nE: SUBSYSTEM=usb\nA: bInterfaceNumber=00\n\nP: " + kUsb +
           "\nE: DEVTYPE=usb_device\nE: SUBSYSTEM=usb\nE: PRODUCT=" + number +
           "\nA: bcdDevice=0100\nA: manufacturer=" + options_.manufacturer + "\nA: product=" + options_.name +
           "\nA: serial=" + options_.serialNumber + "\n\n";
}

void MockedHidraw::plug() {
    ++plugged_;  // the test bed keeps the far end of a node that has gone, so each one gets a name of its own
    std::ofstream(ioctls_) << ioctlText(node());
    GError* error = nullptr;
    umockdev_testbed_add_from_string(bed_, description().c_str(), &error);
    check(error, "the mocked device");
    umockdev_testbed_load_ioctl(bed_, nullptr, ioctls_.c_str(), &error);
    check(error, "its ioctls");
    descriptor_ = umockdev_testbed_get_dev_fd(bed_, node().c_str());
    if (descriptor_ < 0) throw std::runtime_error("the mocked device has no far end");
    ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) | O_NONBLOCK);
    pending_.clear();
}

void MockedHidraw::unplug() {
    // A terminal whose number is used again is one that the test bed knows already and fails on.
    kept_.push_back(::ioctl(descriptor_, TIOCGPTPEER, O_RDWR | O_NOCTTY));
    ::close(descriptor_);
    descriptor_ = -1;
    const std::string hid = hidPath();
    umockdev_testbed_uevent(bed_, ("/sys" + hid + "/hidraw/" + name()).c_str(), "remove");
    for (const auto& path : {hid + "/hidraw/" + name(), hid, std::string(kInterface), std::string(kUsb)}) {
        umockdev_testbed_remove_device(bed_, ("/sys" + path).c_str());
    }
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
