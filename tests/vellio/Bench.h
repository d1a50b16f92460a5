#pragma once

#include <deque>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/hid/FakeHidBus.h"
#include "vellio/vellio.h"

namespace corvane {

/// A device whose reports the test writes down and reads.
class ScriptedPeer : public fakes::ReportPeer {
public:
    bool isPlugged() const override { return plugged; }
    bool accepts() override { return room != 0; }
    void hear(const HidReport& report) override {
        heard.push_back(report);
        if (room > 0) --room;
    }
    std::optional<HidReport> speak() override {
        if (toSay.empty()) return std::nullopt;
        const HidReport report = toSay.front();
        toSay.pop_front();
        return report;
    }
    bool getReport(bool isFeature, HidReport& report) override {
        report[1] = isFeature ? 0xFE : 0x11;
        return report[0] != 0;
    }
    bool setFeature(const HidReport& report) override {
        feature = report;
        return true;
    }

    /// An input report that begins with these bytes.
    void say(std::initializer_list<int> bytes) {
        HidReport report{};
        std::size_t at = 0;
        for (const int byte : bytes) report[at++] = static_cast<std::uint8_t>(byte);
        toSay.push_back(report);
    }
    void sayData(std::size_t count) {
        HidReport report{1, static_cast<std::uint8_t>(count)};
        for (std::size_t i = 0; i < count; ++i) report[2 + i] = static_cast<std::uint8_t>(i);
        toSay.push_back(report);
    }

    bool plugged = true;
    int room = -1;  // reports that are taken; -1 any number
    std::deque<HidReport> toSay;
    std::vector<HidReport> heard;
    HidReport feature{};
};

/// Handles of the library over a bus of the test, with the events that were delivered as texts "code:parameter:text".
class VellBench : public ::testing::Test {
protected:
    ~VellBench() override {
        for (const auto handle : handles_) vellDestroy(handle);
    }

    std::int32_t create(std::int32_t vendor, std::int32_t product) {
        const auto handle = vellCreate(vendor, product);
        handles_.push_back(handle);
        vellSetCallBackProc(handle, &VellBench::record, reinterpret_cast<std::intptr_t>(this));
        return handle;
    }

    static vellio::DeviceInfo info(int place, int product = 5, const std::string& name = "Kestrel") {
        return {"/dev/hidraw" + std::to_string(place),
                0x1209,
                static_cast<std::uint16_t>(product),
                "Corvane",
                name,
                "K" + std::to_string(place)};
    }

    /// A handle with this peer open as HID1.
    std::int32_t opened(fakes::ReportPeer& peer) {
        bus.plug(info(1), peer);
        const auto handle = create(0x1209, 5);
        EXPECT_TRUE(vellOpen(handle, "HID1"));
        vellDispatch(handle);
        events.clear();
        return handle;
    }

    static std::int32_t write(std::int32_t handle, const std::string& text) {
        return vellWritePtr(handle, text.data(), static_cast<std::int32_t>(text.size()));
    }

    static std::string read(std::int32_t handle, std::int32_t count) {
        std::string text(static_cast<std::size_t>(count), '?');
        text.resize(static_cast<std::size_t>(vellReadPtr(handle, text.data(), count)));
        return text;
    }

    std::vector<std::string> dispatched(std::int32_t handle) {
        events.clear();
        vellDispatch(handle);
        return events;
    }

    using Texts = std::vector<std::string>;

    std::uint32_t now = 0;
    fakes::FakeHidBus bus{[this] { return now; }};
    Texts events;

private:
    static std::int32_t record(std::int32_t handle, std::intptr_t user, std::int32_t code, std::int32_t parameter) {
        reinterpret_cast<VellBench*>(user)->events.push_back(std::to_string(code) + ":" + std::to_string(parameter) +
                                                             ":" + vellGetParamString(handle));
        return 0;
    }

    std::vector<std::int32_t> handles_;
};

}  // namespace corvane
