#include <cerrno>
#include <hidapi/hidapi.h>
#include <libudev.h>
#include <locale.h>
#include <set>
#include <time.h>
#include <utility>

#include "text/Cp1252.h"
#include "vellio/HidBackend.h"
#include "vellio/NodeLock.h"

namespace corvane::vellio {
namespace {

constexpr unsigned short kFirstVendorUsagePage = 0xFF00;  // keyboards and mice of a reader lie below

std::string utf8Of(const wchar_t* text) {
    std::string result;
    for (; text && *text; ++text) {
        const auto code = static_cast<char32_t>(*text);
        if (code < 0x80) {
            result += static_cast<char>(code);
        } else if (code < 0x800) {
            result += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
        } else if (code < 0x10000) {
            result += {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
                       static_cast<char>(0x80 | (code & 0x3F))};
        } else {
            result += '?';  // none of these is in Windows-1252
        }
    }
    return result;
}

std::string textOf(const wchar_t* text) { return fromUtf8(utf8Of(text)); }

/// hidapi takes the system's texts, which are UTF-8, for whatever the locale says; in a program that has set none, or
/// in a session without one, it would give none beyond ASCII.
class Utf8Scope {
public:
    Utf8Scope() : own_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), before_(own_ ? uselocale(own_) : nullptr) {}
    ~Utf8Scope() {
        if (!own_) return;
        uselocale(before_);
        freelocale(own_);
    }
    Utf8Scope(const Utf8Scope&) = delete;
    Utf8Scope& operator=(const Utf8Scope&) = delete;

private:
    locale_t own_;
    locale_t before_;
};

/// A device node of the hidraw driver, which knows no time limit but its own.
class HidrawDevice : public HidDevice {
public:
    HidrawDevice(hid_device* device, NodeLock lock) : lock_(std::move(lock)), device_(device) {}
    ~HidrawDevice() override { hid_close(device_); }
    HidrawDevice(const HidrawDevice&) = delete;
    HidrawDevice& operator=(const HidrawDevice&) = delete;

    Moved read(HidReport& report) override {
        errno = 0;
        return moved(hid_read_timeout(device_, report.data(), report.size(), 0));
    }

    Moved write(const HidReport& report, int /*waitMs*/) override {
        errno = 0;
        return moved(hid_write(device_, report.data(), report.size()));
    }

    bool getInputReport(HidReport& report, int /*waitMs*/) override {
        return hid_get_input_report(device_, report.data(), report.size()) > 0;
    }

    bool getFeature(HidReport& report, int /*waitMs*/) override {
        return hid_get_feature_report(device_, report.data(), report.size()) > 0;
    }

    bool setFeature(const HidReport& report, int /*waitMs*/) override {
        return hid_send_feature_report(device_, report.data(), report.size()) > 0;
    }

private:
    /// A signal that some program handles in the middle of a call says nothing about the device.
    static Moved moved(int count) {
        if (count < 0) return errno == EINTR ? Moved::notNow : Moved::gone;
        return count > 0 ? Moved::done : Moved::notNow;
    }

    NodeLock lock_;  // goes after the device is closed
    hid_device* device_;
};

/// The system's HID devices: hidapi lists and opens them, udev tells which come and go.
class HidapiBackend : public HidBackend {
public:
    HidapiBackend() : udev_(udev_new()) {
        monitor_ = udev_ ? udev_monitor_new_from_netlink(udev_, "udev") : nullptr;
        if (!monitor_) return;
        udev_monitor_filter_add_match_subsystem_devtype(monitor_, "hidraw", nullptr);
        udev_monitor_enable_receiving(monitor_);
    }

    ~HidapiBackend() override {
        if (monitor_) udev_monitor_unref(monitor_);
        if (udev_) udev_unref(udev_);
        hid_exit();  // frees its last error text, nothing that an open device needs
    }

    HidapiBackend(const HidapiBackend&) = delete;
    HidapiBackend& operator=(const HidapiBackend&) = delete;

    std::vector<DeviceInfo> devices() override {
        std::vector<DeviceInfo> found;
        const Utf8Scope scope;
        std::set<std::string> paths;  // hidapi lists a node once for each of its usages
        hid_device_info* const list = hid_enumerate(0, 0);
        for (const auto* device = list; device; device = device->next) {
            const bool usable = device->usage_page == 0 || device->usage_page >= kFirstVendorUsagePage;
            if (!usable || !paths.insert(device->path).second) continue;
            found.push_back({device->path, device->vendor_id, device->product_id, textOf(device->manufacturer_string),
                             textOf(device->product_string), textOf(device->serial_number)});
        }
        hid_free_enumeration(list);
        return found;
    }

    std::optional<std::vector<std::string>> changes() override {
        std::optional<std::vector<std::string>> gone;
        while (udev_device* const device = monitor_ ? udev_monitor_receive_device(monitor_) : nullptr) {
            if (!gone) gone.emplace();
            const char* const action = udev_device_get_action(device);
            const char* const node = udev_device_get_devnode(device);
            if (action && node && std::string(action) == "remove") gone->push_back(node);
            udev_device_unref(device);
        }
        return gone;
    }

    std::unique_ptr<HidDevice> open(const std::string& path, Refusal& refusal) override {
        NodeLock lock;
        if (!lock.take(path, refusal)) return nullptr;
        const Utf8Scope scope;
        hid_device* const device = hid_open_path(path.c_str());
        if (device) return std::make_unique<HidrawDevice>(device, std::move(lock));
        refusal = {path + ": " + utf8Of(hid_error(nullptr)), false};
        return nullptr;
    }

    std::uint32_t tick() override {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::uint32_t>(now.tv_sec * 1000LL + now.tv_nsec / 1000000);
    }

private:
    udev* udev_;
    udev_monitor* monitor_ = nullptr;
};

}  // namespace

std::unique_ptr<HidBackend> makeBackend() {
    if (hid_init() != 0) return nullptr;
    return std::make_unique<HidapiBackend>();
}

}  // namespace corvane::vellio
