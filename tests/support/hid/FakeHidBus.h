#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "models/HidReader.h"
#include "vellio/HidBackend.h"

namespace corvane::fakes {

/// One end of a report pipe as the transport library sees it; tests make their own or take a simulated reader.
class ReportPeer {
public:
    virtual ~ReportPeer() = default;
    virtual bool isPlugged() const { return true; }
    virtual bool accepts() { return true; }
    virtual void hear(const HidReport& report) = 0;
    virtual std::optional<HidReport> speak() = 0;
    virtual bool getReport(bool isFeature, HidReport& report) { return isFeature && report[0] == 0; }
    virtual bool setFeature(const HidReport& /*report*/) { return false; }
};

/// The plugged HID devices of a test: what the transport library finds while one of these exists. Fails the test when a
/// device is used after it was closed.
class FakeHidBus {
public:
    /// The library's clock, in ms.
    explicit FakeHidBus(std::function<std::uint32_t()> tick);
    ~FakeHidBus();
    FakeHidBus(const FakeHidBus&) = delete;
    FakeHidBus& operator=(const FakeHidBus&) = delete;

    /// The peer is not owned.
    void plug(const vellio::DeviceInfo& info, ReportPeer& peer);
    void unplug(const std::string& path);

    /// Plug events reach the library as long as this is not False: else it has to look by itself.
    void tellsChanges(bool tells) { tellsChanges_ = tells; }
    void forbid(const std::string& path) { forbidden_.insert(path); }
    void isOutOfOrder(bool broken) { broken_ = broken; }
    int openDevices() const { return open_; }

    static std::unique_ptr<vellio::HidBackend> makeBackend();

private:
    friend struct FakeHidBackend;
    friend struct FakeHidDevice;

    struct Entry {
        vellio::DeviceInfo info;
        ReportPeer* peer;
    };

    std::function<std::uint32_t()> tick_;
    std::map<std::string, Entry> plugged_;
    std::vector<std::string> gone_;
    std::set<std::string> forbidden_;
    bool changed_ = false;
    bool tellsChanges_ = true;
    bool broken_ = false;
    int open_ = 0;
};

/// A simulated reader as the far end of a report pipe.
class ReaderPeer : public ReportPeer {
public:
    ReaderPeer(models::HidReader& reader, std::function<models::Micros()> now)
        : reader_(reader), now_(std::move(now)) {}

    bool isPlugged() const override { return reader_.isPlugged(); }
    bool accepts() override { return reader_.accepts(now_()); }
    void hear(const HidReport& report) override { reader_.hear(now_(), report); }
    std::optional<HidReport> speak() override { return reader_.speak(now_()); }

private:
    models::HidReader& reader_;
    std::function<models::Micros()> now_;
};

}  // namespace corvane::fakes
