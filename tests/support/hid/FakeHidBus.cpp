#include "support/hid/FakeHidBus.h"

#include <gtest/gtest.h>
#include <utility>

namespace corvane::fakes {
namespace {

FakeHidBus* current = nullptr;  // the library is made by a C function, which takes no bus

}  // namespace

struct FakeHidDevice : vellio::HidDevice {
    FakeHidDevice(FakeHidBus& bus, std::string path, ReportPeer& peer)
        : bus_(bus), path_(std::move(path)), peer_(peer) {
        ++bus_.open_;
    }
    ~FakeHidDevice() override { --bus_.open_; }

    vellio::Moved read(HidReport& report) override {
        if (isGone()) return vellio::Moved::gone;
        const auto said = peer_.speak();
        if (!said) return isGone() ? vellio::Moved::gone : vellio::Moved::notNow;
        report = *said;
        return vellio::Moved::done;
    }

    vellio::Moved write(const HidReport& report, int waitMs) override {
        if (isGone()) return vellio::Moved::gone;
        if (waitMs == 0 && !peer_.accepts()) return vellio::Moved::notNow;
        peer_.hear(report);
        return vellio::Moved::done;
    }

    bool getInputReport(HidReport& report, int) override { return !isGone() && peer_.getReport(false, report); }
    bool getFeature(HidReport& report, int) override { return !isGone() && peer_.getReport(true, report); }
    bool setFeature(const HidReport& report, int) override { return !isGone() && peer_.setFeature(report); }

private:
    /// A node that was unplugged stays dead though another device may be at its path by now.
    bool isGone() {
        const auto found = bus_.plugged_.find(path_);
        gone_ = gone_ || found == bus_.plugged_.end() || found->second.peer != &peer_ || !peer_.isPlugged();
        return gone_;
    }

    FakeHidBus& bus_;
    std::string path_;
    ReportPeer& peer_;
    bool gone_ = false;
};

struct FakeHidBackend : vellio::HidBackend {
    explicit FakeHidBackend(FakeHidBus& bus) : bus_(bus) {}

    std::vector<vellio::DeviceInfo> devices() override {
        std::vector<vellio::DeviceInfo> infos;
        for (const auto& [path, entry] : bus_.plugged_) {
            if (entry.peer->isPlugged()) infos.push_back(entry.info);
        }
        return infos;
    }

    std::optional<std::vector<std::string>> changes() override {
        if (!bus_.tellsChanges_ || !std::exchange(bus_.changed_, false)) return std::nullopt;
        return std::exchange(bus_.gone_, {});
    }

    std::unique_ptr<vellio::HidDevice> open(const std::string& path, vellio::Refusal& refusal) override {
        const auto found = bus_.plugged_.find(path);
        refusal = {path + ": Permission denied", false};
        if (found == bus_.plugged_.end() || bus_.forbidden_.count(path)) return nullptr;
        return std::make_unique<FakeHidDevice>(bus_, path, *found->second.peer);
    }

    std::uint32_t tick() override { return bus_.tick_(); }

private:
    FakeHidBus& bus_;
};

FakeHidBus::FakeHidBus(std::function<std::uint32_t()> tick) : tick_(std::move(tick)) { current = this; }

FakeHidBus::~FakeHidBus() {
    EXPECT_EQ(open_, 0) << "a HID device was left open";
    current = nullptr;
}

void FakeHidBus::plug(const vellio::DeviceInfo& info, ReportPeer& peer) {
    plugged_[info.path] = {info, &peer};
    changed_ = true;
}

void FakeHidBus::unplug(const std::string& path) {
    plugged_.erase(path);
    gone_.push_back(path);
    changed_ = true;
}

std::unique_ptr<vellio::HidBackend> FakeHidBus::makeBackend() {
    return current && !current->broken_ ? std::make_unique<FakeHidBackend>(*current) : nullptr;
}

}  // namespace corvane::fakes

namespace corvane::vellio {

std::unique_ptr<HidBackend> makeBackend() { return fakes::FakeHidBus::makeBackend(); }

}  // namespace corvane::vellio
