#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cable/HidReport.h"

namespace corvane::vellio {

/// One HID device that is plugged in now. The path names it for opening; texts are Windows-1252.
struct DeviceInfo {
    std::string path;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string manufacturer;
    std::string name;
    std::string serialNumber;
};

/// How an attempt to move one report ended. A device that is gone stays gone.
enum class Moved { done, notNow, gone };

/// Why a device could not be opened.
struct Refusal {
    std::string words;     ///< in plain words, with the path
    bool isInUse = false;  ///< another program has it open
};

/// An open device; it is closed when it ends. Nothing here throws; bytes may be anything.
class HidDevice {
public:
    virtual ~HidDevice() = default;

    /// The next input report, without waiting for one.
    virtual Moved read(HidReport& report) = 0;

    /// Hands over an output report; waits at most so many ms for the device to take it.
    virtual Moved write(const HidReport& report, int waitMs) = 0;

    /// A single report, its ID in byte 0; False when the device did not answer in time.
    virtual bool getInputReport(HidReport& report, int waitMs) = 0;
    virtual bool getFeature(HidReport& report, int waitMs) = 0;
    virtual bool setFeature(const HidReport& report, int waitMs) = 0;
};

/// Where HID devices come from. The library's naming, buffers and events are written once over it.
class HidBackend {
public:
    virtual ~HidBackend() = default;

    /// All devices of any vendor.
    virtual std::vector<DeviceInfo> devices() = 0;

    /// Nothing while no device has come or gone since the last call; else the paths that have gone, though a device
    /// may be back at the same path.
    virtual std::optional<std::vector<std::string>> changes() = 0;

    /// Kept for this program alone. Null when it cannot be opened, with the reason.
    virtual std::unique_ptr<HidDevice> open(const std::string& path, Refusal& refusal) = 0;

    /// Milliseconds since some moment; wraps.
    virtual std::uint32_t tick() = 0;
};

/// Defined by each build of the library; null when HID devices cannot be reached at all.
std::unique_ptr<HidBackend> makeBackend();

}  // namespace corvane::vellio
