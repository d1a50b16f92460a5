#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

#include "hid/VellIO.h"
#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

/// Runs as the child of a process that shows a reader, to the real library through the system's hidraw and udev, to the
/// bench's library through its socket. The device behind it unplugs itself when it is asked to, and comes back.
TEST(SystemReader, ClosesWhenUnpluggedAndWorksAgainWhenPlugged) {
    LinuxRuntime runtime;
    DlModuleLoader loader;
    Cancel cancel;
    VellIO control(runtime, loader, std::getenv("CORVANE_VELLIO"), cancel);
    control.ReadProperties(true, {});
    Texts events;
    control.OnDevice = [&](std::int32_t event, const std::string& name, const std::string& text) {
        events.push_back(std::to_string(event) + " " + name + " " + text);
    };
    const auto until = [&](const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            runtime.WaitActivity(10);
            runtime.DoEvents();
        }
        return true;
    };
    for (const bool isBack : {false, true}) {
        ASSERT_EQ(control.NumberOfCommPorts(), 1);
        control.CommPort("HID1");
        control.PortOpen(true);
        ASSERT_TRUE(control.PortOpen()) << control.openFailure();
        EXPECT_EQ(control.GetHIDVersion() + control.GetDeviceSerialNumber("HID1"), "KESTREL V2.4K1");
        std::string answer;
        control.CommOutput(Bytes{0x01, 0x00, 0x01, 0x00, 0x50, 0x70});  // asks the device for its version
        EXPECT_TRUE(until([&] { return (answer += textOf(std::get<Bytes>(control.CommInput()))).size() >= 24; }));
        EXPECT_EQ(answer.substr(4, 17), "TARN-R200 V5.1R23");
        control.CommOutput(Bytes(2000, 0));  // nonsense for the device
        EXPECT_TRUE(until([&] { return control.OutBufferCount() == 0; }));
        if (isBack) break;
        events.clear();
        control.CommOutput(Bytes{0x01, 0x00, 0x1F, 0x00, 0xF0, 0x79});  // what unplugs it
        EXPECT_TRUE(until([&] { return !control.PortOpen(); }));
        EXPECT_TRUE(until([&] { return control.IsNewDevicePlugin(); }));
        EXPECT_EQ(events, Texts({"2 HID1 HID1 Kestrel", "0 HID1 HID1 Kestrel", "1 HID1 HID1 Kestrel"}));
    }
    control.Terminate();
}

}  // namespace
}  // namespace corvane
