#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "vellio/HidBackend.h"
#include "vellio/vellio.h"

// Any reports from a device, of any content, between any calls of a program: nothing crashes, and no buffer holds more
// than its size.

namespace {

using namespace corvane;

/// What is left of the fuzzer's bytes; both the device and the calls live on it.
struct Input {
    const std::uint8_t* at = nullptr;
    std::size_t left = 0;

    std::uint8_t byte() {
        if (left == 0) return 0;
        --left;
        return *at++;
    }
};

Input* input = nullptr;

class FuzzedDevice : public vellio::HidDevice {
public:
    vellio::Moved read(HidReport& report) override {
        const auto kind = input->byte();
        if (input->left == 0 || kind < 8) return kind == 7 ? vellio::Moved::gone : vellio::Moved::notNow;
        report = {};
        // Most reports are near to being sound, or hardly any would get past the first check.
        report[0] = kind < 200 ? static_cast<std::uint8_t>(kind % 3 + 1) : kind;
        report[1] = input->byte();
        for (std::size_t i = 2; i < report.size() && input->left; ++i) report[i] = input->byte();
        return vellio::Moved::done;
    }

    vellio::Moved write(const HidReport&, int) override {
        return input->byte() % 4 ? vellio::Moved::done : vellio::Moved::notNow;
    }

    bool getInputReport(HidReport& report, int) override {
        report[1] = input->byte();
        return true;
    }
    bool getFeature(HidReport& report, int waitMs) override { return getInputReport(report, waitMs); }
    bool setFeature(const HidReport&, int) override { return true; }
};

class FuzzedBackend : public vellio::HidBackend {
public:
    std::vector<vellio::DeviceInfo> devices() override {
        std::vector<vellio::DeviceInfo> found;
        for (const char* path : {"a", "b", "c"}) {
            if (input->byte() % 4) found.push_back({path, 1, input->byte(), "", std::string(1, '\xE9'), ""});
        }
        return found;
    }
    std::optional<std::vector<std::string>> changes() override {
        const auto what = input->byte() % 8;
        if (what > 1) return std::nullopt;
        return what ? std::vector<std::string>{"a"} : std::vector<std::string>{};
    }
    std::unique_ptr<vellio::HidDevice> open(const std::string&, std::string&) override {
        return std::make_unique<FuzzedDevice>();
    }
    std::uint32_t tick() override { return static_cast<std::uint32_t>(input->byte()) * 100; }
};

void require(bool holds) {
    if (!holds) std::abort();
}

void checkBounds(std::int32_t handle) {
    require(vellBytesToRead(handle) <= vellGetReadBufferSize(handle));
    require(vellBytesToWrite(handle) <= vellGetWriteBufferSize(handle));
    require(vellBytesToReadCtrl(handle) <= 1024);
    require(vellBytesToWriteCtrl(handle) <= 1024);
}

/// The first byte chooses the call, the next ones its arguments.
void call(std::int32_t handle) {
    static std::uint8_t array[300];
    const std::int32_t start = input->byte(), count = input->byte() * 2;
    switch (input->byte() % 16) {
        case 0:
            vellOpen(handle, "HID1");
            break;
        case 1:
            vellOpen(handle, "b");
            break;
        case 2:
            vellClose(handle);
            break;
        case 3:
            vellService(handle);
            break;
        case 4:
            vellDispatch(handle);
            break;
        case 5:
            vellRead(handle, array, sizeof array, start, count);
            break;
        case 6:
            vellReadCtrl(handle, array, sizeof array, start, count);
            break;
        case 7:
            vellWrite(handle, array, sizeof array, start, count);
            break;
        case 8:
            vellWriteCtrl(handle, array, sizeof array, start, count);
            break;
        case 9:
            vellSetReadBufferSize(handle, start - 8);
            break;
        case 10:
            vellSetWriteBufferSize(handle, start - 8);
            break;
        case 11:
            vellDiscardWriteCtrlBuffer(handle);
            break;
        case 12:
            vellSetNumberInputBuffers(handle, count);
            break;
        case 13:
            vellGetFeature(handle, array, sizeof array, start, count);
            break;
        case 14:
            vellNumberOfDevice(handle);
            break;
        default:
            vellCheckDevicesIsChanged(handle, static_cast<std::int16_t>(start % 2));
            break;
    }
}

std::int32_t listen(std::int32_t handle, std::intptr_t, std::int32_t code, std::int32_t) {
    require(vellGetParamString(handle) != nullptr);
    if (code == 9 && input->byte() % 2) vellOpen(handle, "HID1");  // as a program might
    return 0;
}

}  // namespace

std::unique_ptr<vellio::HidBackend> vellio::makeBackend() { return std::make_unique<FuzzedBackend>(); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input bytes{data, size};
    input = &bytes;
    const std::int32_t handle = vellCreate(-1, -1);
    vellSetCallBackProc(handle, listen, 0);
    vellOpen(handle, "HID1");
    while (bytes.left) {
        call(handle);
        checkBounds(handle);
    }
    vellDestroy(handle);
    return 0;
}
