#pragma once

#include <deque>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/hid/FakeHidBus.h"
#include "vellio/vellio.h"

namespace corvane {

/// A device whose reports the test writes down and reads.
struct ScriptedPeer : fakes::ReportPeer {
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
        heard.push_back(report);
        return true;
    }

    /// Input reports that begin with these bytes.
    void say(const Bytes& bytes, int times = 1) {
        HidReport report{};
        std::copy(bytes.begin(), bytes.end(), report.begin());
        toSay.insert(toSay.end(), static_cast<std::size_t>(times), report);
    }

    bool plugged = true;
    int room = -1;  // reports that are taken; -1 any number
    std::deque<HidReport> toSay;
    std::vector<HidReport> heard;
};

/// A handle of the library over a bus of the test, with the events that were delivered as texts "code:parameter:text".
class VellBench : public ::testing::Test {
protected:
    using Texts = std::vector<std::string>;

    ~VellBench() override {
        for (const auto handle : handles_) vellDestroy(handle);
    }

    std::int32_t create(std::int32_t vendor = 0x1209, std::int32_t product = 5) {
        handles_.push_back(vellCreate(vendor, product));
        vellSetCallBackProc(handles_.back(), &VellBench::record, reinterpret_cast<std::intptr_t>(this));
        return handles_.back();
    }

    static std::string path(int place) { return "/dev/hidraw" + std::to_string(place); }

    void plug(int place, std::uint16_t product = 5, const std::string& name = "Kestrel") {
        bus.plug({path(place), 0x1209, product, "Corvane", name, "K" + std::to_string(place)}, peer);
    }

    Texts dispatched(std::int32_t handle) {
        events.clear();
        vellDispatch(handle);
        return events;
    }

    std::uint32_t now = 0;
    fakes::FakeHidBus bus{[this] { return now; }};
    ScriptedPeer peer;
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
