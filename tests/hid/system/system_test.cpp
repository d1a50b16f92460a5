#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

#include "hid/VellIO.h"
#include "platform/linux/DlModuleLoader.h"
#include "platform/linux/LinuxRuntime.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

/// Runs as the child of a process that shows a reader: to the real library through the system's hidraw and udev, to the
/// bench's library through its socket. The tests are the same.
class SystemReader : public ::testing::Test {
protected:
    SystemReader() : control_(runtime_, loader_, std::getenv("CORVANE_TEST_LIBRARY")) {
        control_.ReadProperties(true, {});
        control_.OnDevice = [this](std::int32_t event, const std::string& name, const std::string& text) {
            events_.push_back(std::to_string(event) + " " + name + " " + text);
        };
    }

    ~SystemReader() override { control_.Terminate(); }

    /// Asks that process to unplug or plug itself and waits until it has.
    static void order(const std::string& what) {
        const int line = std::atoi(std::getenv("CORVANE_MOCKED_READER"));
        char answer[8] = {};
        ASSERT_EQ(::write(line, (what + "\n").c_str(), what.size() + 1), static_cast<ssize_t>(what.size() + 1));
        ASSERT_GT(::read(line, answer, sizeof answer), 0);
    }

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

    std::string ask(const Bytes& request, std::size_t size) {
        std::string answer;
        control_.CommOutput(request);
        until([&] {
            answer += textOf(std::get<Bytes>(control_.CommInput()));
            return answer.size() >= size;
        });
        return answer;
    }

    LinuxRuntime runtime_;
    DlModuleLoader loader_;
    VellIO control_;
    Texts events_;
};

const Bytes kGetVersion{0x01, 0x00, 0x01, 0x00, 0x50, 0x70};
const std::string kVersion = std::string("\x01\x00\x06\x12TARN-R200 V5.1R23\x00", 22);

TEST_F(SystemReader, IsListedWithItsTexts) {
    ASSERT_EQ(control_.libraryProblem(), "");
    ASSERT_EQ(control_.NumberOfCommPorts(), 1);
    EXPECT_EQ(control_.EnumCommPort(0), "HID1");
    EXPECT_EQ(control_.EnumCommPortEx(0), "HID1 Kestrel");
    EXPECT_EQ(control_.GetDeviceManufacturer("HID1"), "Corvane");
    EXPECT_EQ(control_.GetDeviceSerialNumber("HID1"), "K0001");
    EXPECT_TRUE(control_.DeviceIsUSBID("hid1", 0x1209, 5));
}

TEST_F(SystemReader, AnswersOnBothChannels) {
    open();
    EXPECT_EQ(control_.KestrelDefaultSerialTo(), 1);
    EXPECT_EQ(control_.GetHIDVersion(), "KESTREL V2.4");
    EXPECT_EQ(ask(kGetVersion, 24).substr(0, 22), kVersion);
    Bytes many(4000, 0);  // nonsense for the device, and more than the library's buffer holds
    control_.CommOutput(Bytes(many.begin(), many.begin() + 2000));
    EXPECT_TRUE(until([&] { return control_.OutBufferCount() == 0; }));
    EXPECT_TRUE(control_.KestrelDiscardBuffer());
    control_.PortOpen(false);
    EXPECT_FALSE(control_.PortOpen());
}

TEST_F(SystemReader, ClosesWhenUnpluggedAndWorksAgainWhenPlugged) {
    open();
    events_.clear();
    order("unplug");
    EXPECT_TRUE(until([&] { return !control_.PortOpen(); }));
    EXPECT_EQ(control_.GetHIDVersion(), "");
    EXPECT_TRUE(until([&] { return events_.size() >= 2; }));
    EXPECT_EQ(events_, Texts({"2 HID1 HID1 Kestrel", "0 HID1 HID1 Kestrel"}));
    EXPECT_EQ(control_.NumberOfCommPorts(), 0);
    control_.PortOpen(true);
    EXPECT_FALSE(control_.PortOpen());
    control_.IsNewDevicePlugin();
    order("plug");
    EXPECT_TRUE(until([&] { return control_.IsNewDevicePlugin(); }));
    EXPECT_EQ(events_.back(), "1 HID1 HID1 Kestrel");
    open();
    EXPECT_EQ(ask(kGetVersion, 24).substr(0, 22), kVersion);
    EXPECT_EQ(control_.GetHIDVersion(), "KESTREL V2.4");
}

TEST_F(SystemReader, IsUnpluggedInTheMiddleOfACommand) {
    open();
    bool asked = false;
    runtime_.post(this, [&] {
        asked = true;
        order("unplug");
    });
    for (int i = 0; i < 3 && control_.PortOpen(); ++i) control_.GetHIDVersion();
    EXPECT_TRUE(asked);
    EXPECT_FALSE(control_.PortOpen());
    control_.PortOpen(false);
    order("plug");
    EXPECT_TRUE(until([&] { return control_.NumberOfCommPorts() == 1; }));
    open();
}

}  // namespace
}  // namespace corvane
