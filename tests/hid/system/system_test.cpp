#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>

#include "hid/VellIO.h"
#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

/// Runs as the child of a process that shows a reader, to the real library through the system's hidraw and udev, to the
/// bench's library through its socket. The device behind it unplugs itself when it is asked to, and comes back.
class SystemReader : public ::testing::Test {
protected:
    SystemReader() : control_(runtime_, loader_, std::getenv("CORVANE_VELLIO"), cancel_) {
        control_.ReadProperties(true, {});
        control_.OnDevice = [this](std::int32_t event, const std::string& name, const std::string& text) {
            events_.push_back(std::to_string(event) + " " + name + " " + text);
        };
    }

    ~SystemReader() override { control_.Terminate(); }

    /// Lets the program's loop turn until the condition holds; False when it does not within some seconds.
    template <typename Condition>
    bool until(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            runtime_.WaitActivity(10);
            runtime_.DoEvents();
        }
        return true;
    }

    void open() {
        ASSERT_EQ(control_.NumberOfCommPorts(), 1);
        control_.CommPort("HID1");
        control_.PortOpen(true);
        ASSERT_TRUE(control_.PortOpen()) << control_.openFailure();
    }

    /// Asks the device for its version.
    std::string version() {
        std::string answer;
        control_.CommOutput(Bytes{0x01, 0x00, 0x01, 0x00, 0x50, 0x70});
        until([&] {
            answer += textOf(std::get<Bytes>(control_.CommInput()));
            return answer.size() >= 24;
        });
        return answer.substr(4, 17);
    }

    LinuxRuntime runtime_;
    DlModuleLoader loader_;
    Cancel cancel_;
    VellIO control_;
    Texts events_;
};

TEST_F(SystemReader, IsListedAndAnswersOnBothChannels) {
    open();
    EXPECT_EQ(control_.EnumCommPortEx(0) + "/" + control_.GetDeviceSerialNumber("HID1"), "HID1 Kestrel/K1");
    EXPECT_TRUE(control_.IsFunctionSupported("vellService") && control_.DeviceIsUSBID("hid1", 0x1209, 5));
    EXPECT_EQ(control_.KestrelDefaultSerialTo(), 1);
    control_.CommOutput(Bytes(2000, 0));  // nonsense for the device
    EXPECT_TRUE(until([&] { return control_.OutBufferCount() == 0; }));
    EXPECT_TRUE(control_.KestrelDiscardBuffer());
    control_.PortOpen(false);
    EXPECT_FALSE(control_.PortOpen());
}

TEST_F(SystemReader, ClosesWhenUnpluggedAndWorksAgainWhenPlugged) {
    for (const bool inACommand : {false, true}) {
        open();
        events_.clear();
        control_.CommOutput(Bytes{0x01, 0x00, 0x1F, 0x00, 0xF0, 0x79});  // what unplugs it
        for (int i = 0; inACommand && i < 1000 && control_.PortOpen(); ++i) control_.GetHIDVersion();
        EXPECT_TRUE(until([&] { return !control_.PortOpen(); }));
        EXPECT_EQ(control_.GetHIDVersion(), "");
        EXPECT_TRUE(until([&] { return control_.IsNewDevicePlugin(); }));
        EXPECT_EQ(events_, Texts({"2 HID1 HID1 Kestrel", "0 HID1 HID1 Kestrel", "1 HID1 HID1 Kestrel"}));
        open();
        EXPECT_EQ(version(), "TARN-R200 V5.1R23");
        EXPECT_EQ(control_.GetHIDVersion(), "KESTREL V2.4");
        control_.PortOpen(false);
    }
}

}  // namespace
}  // namespace corvane
