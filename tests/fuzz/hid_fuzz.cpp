// What a HID reader says: reports of any content between any calls of a program, and replies to commands.

#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "hid/ControlBench.h"

namespace corvane::fuzz {
namespace {

/// A device that sends, takes and answers as the input says.
struct AnyReader : fakes::ReportPeer {
    explicit AnyReader(Input& input) : input_(input) {}

    bool isPlugged() const override { return plugged_; }
    bool accepts() override { return input_.byte() % 4 != 0; }
    void hear(const HidReport&) override {}

    std::optional<HidReport> speak() override {
        const auto kind = input_.byte();
        plugged_ = plugged_ && kind != 7;
        if (input_.isEmpty() || kind < 8) return std::nullopt;
        // Most reports are near to being sound, or hardly any would get past the first check.
        HidReport report{kind < 200 ? static_cast<std::uint8_t>(kind % 3 + 1) : kind};
        for (std::size_t i = 1; i < report.size() && !input_.isEmpty(); ++i) report[i] = input_.byte();
        return report;
    }

    bool getReport(bool, HidReport& report) override {
        report[1] = input_.byte();
        return true;
    }
    bool setFeature(const HidReport&) override { return true; }

private:
    Input& input_;
    bool plugged_ = true;
};

vellio::DeviceInfo infoOf(const char* path, const std::string& name) { return {path, 0x1209, 5, "", name, ""}; }

/// What is given to the library's C functions while one input is at work.
Input* current = nullptr;

std::int32_t listen(std::int32_t handle, std::intptr_t, std::int32_t code, std::int32_t) {
    require(vellGetParamString(handle) != nullptr, "an event has a text");
    if (code == 9 && current->byte() % 2) vellOpen(handle, "HID1");  // as a program might
    return 0;
}

/// The next byte chooses the call, those before it its arguments. The buffers keep their sizes.
void call(std::int32_t handle) {
    std::uint8_t array[300] = {};
    constexpr std::int32_t kSize = sizeof array;
    const std::int32_t start = current->byte(), count = current->byte() * 2;
    const std::vector<std::function<void()>> calls = {
        [&] { vellOpen(handle, start % 2 ? "HID1" : "b"); },
        [&] { vellClose(handle); },
        [&] { vellService(handle); },
        [&] { vellDispatch(handle); },
        [&] { vellRead(handle, array, kSize, start, count); },
        [&] { vellReadCtrl(handle, array, kSize, start, count); },
        [&] { vellWrite(handle, array, kSize, start, count); },
        [&] { vellWriteCtrl(handle, array, kSize, start, count); },
        [&] { vellSetReadBufferSize(handle, start - 8); },
        [&] { vellSetWriteBufferSize(handle, start - 8); },
        [&] { vellDiscardWriteCtrlBuffer(handle); },
        [&] { vellSetNumberInputBuffers(handle, count); },
        [&] { vellGetFeature(handle, array, kSize, start, count); },
        [&] { vellCheckDevicesIsChanged(handle, static_cast<std::int16_t>(start % 2)); },
    };
    calls[current->byte() % calls.size()]();
    require(vellBytesToRead(handle) <= vellGetReadBufferSize(handle) &&
                vellBytesToWrite(handle) <= vellGetWriteBufferSize(handle) && vellBytesToReadCtrl(handle) <= 1024 &&
                vellBytesToWriteCtrl(handle) <= 1024,
            "a buffer keeps its size");
}

}  // namespace

void hid_reports(std::string_view bytes) {
    Input input(bytes);
    current = &input;
    std::uint32_t tick = 0;
    fakes::FakeHidBus bus([&] { return tick += input.byte(); });
    AnyReader first(input), second(input);
    bus.plug(infoOf("a", "\xE9\x01"), first);
    bus.plug(infoOf("b", std::string(300, 'b')), second);
    const auto handle = vellCreate(-1, -1);
    vellSetCallBackProc(handle, listen, 0);
    vellOpen(handle, "HID1");
    while (!input.isEmpty()) {
        if (const auto what = input.byte(); what == 1) bus.unplug("a");
        call(handle);
    }
    vellDestroy(handle);
}

/// The reader answers each command with the next piece of the input (up to 0xFF): its first byte is a delay in ms.
void hid_commands(std::string_view bytes) {
    ControlBench bench;
    for (Input input(bytes); !input.isEmpty();) {
        Input piece(input.upTo('\xFF'));
        ScriptedReader::Pieces reports;
        for (const int ms = piece.byte(); !piece.isEmpty();) {
            if (reports.empty() || reports.back().second.size() == kHidReportContent) reports.push_back({ms, {}});
            reports.back().second.push_back(piece.byte());
        }
        bench.reader.reply(reports);
    }
    auto& control = *bench.control;
    control.CommPort("HID1");
    control.PortOpen(true);
    const auto version = control.GetHIDVersion();
    require(version.size() <= 255 && version.find('\0') == std::string::npos, "a version is a text");
    std::int32_t serial = -7, ps2 = -7, extra = -7;
    const bool known = control.GetKestrelDefaultIODirect(serial, ps2, extra);
    require(known ? serial / 2 == 0 && ps2 / 2 == 0 && extra / 2 == 0 : serial == -7, "a direction is 0 or 1");
    Bytes registers(8, 0x5A), results;
    control.KestrelGetRegister(300, registers, 2, 6);
    require(registers == Bytes(8, 0x5A), "the caller's buffer stays as it is");
    for (int i = 0; i < 3; ++i) {
        if (!control.SendHIDCMD(static_cast<std::uint8_t>(i), Bytes(100, 1), results)) continue;
        require(results.size() <= 255 && !control.IsSendHIDCmdNAK(), "what was accepted was not refused");
    }
    control.SendHIDRawCmd({200, 0}, results);
    control.PortOpen(false);
    control.Terminate();
    require(bench.runtime.ms() < 60000, "commands end whatever the reader says");
}

}  // namespace corvane::fuzz
