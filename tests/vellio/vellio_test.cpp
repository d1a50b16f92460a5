#include "vellio/vellio.h"

#include <deque>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/ScratchFolder.h"
#include "support/hid/FakeHidBus.h"
#include "vellio/NodeLock.h"

namespace corvane::tests {

using Texts = std::vector<std::string>;
using Reports = std::vector<Bytes>;

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

TEST(NodeLock, KeepsANodeUntilItEnds) {
    fakes::ScratchFolder folder;
    const auto node = folder.file("hidraw0", "");
    vellio::Refusal refusal;
    {
        vellio::NodeLock first, second;
        EXPECT_TRUE(first.take(node, refusal));
        EXPECT_FALSE(second.take(node, refusal));
        EXPECT_EQ(refusal.words, node + ": in use by another program");
        EXPECT_TRUE(refusal.isInUse);
    }
    EXPECT_TRUE(vellio::NodeLock().take(node, refusal));
    EXPECT_FALSE(vellio::NodeLock().take(folder.at("hidraw1"), refusal) || refusal.isInUse);
    EXPECT_EQ(refusal.words, folder.at("hidraw1") + ": No such file or directory");
}

/// Handles of the library over a bus of the test, with the events that were delivered as texts "code:parameter:text".
struct Devices : ::testing::Test {
    ~Devices() override {
        for (const auto handle : handles_) vellDestroy(handle);
    }

    std::int32_t create(std::int32_t vendor = 0x1209, std::int32_t product = 5) {
        handles_.push_back(vellCreate(vendor, product));
        vellSetCallBackProc(handles_.back(), &Devices::record, reinterpret_cast<std::intptr_t>(this));
        return handles_.back();
    }

    static std::string path(int place) { return "/dev/hidraw" + std::to_string(place); }

    void plug(int place, const std::string& name = "Kestrel", std::uint16_t product = 5,
              std::uint16_t vendor = 0x1209) {
        bus.plug({path(place), vendor, product, "Corvane", name, "K" + std::to_string(place)}, peer);
    }

    Texts names(std::int32_t handle) {
        Texts result;
        const auto count = vellNumberOfDevice(handle);
        for (std::int32_t i = 0; i < count; ++i) result.push_back(vellEnumDevice(handle, i));
        return result;
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
        reinterpret_cast<Devices*>(user)->events.push_back(std::to_string(code) + ":" + std::to_string(parameter) +
                                                           ":" + vellGetParamString(handle));
        return 0;
    }

    std::vector<std::int32_t> handles_;
};

TEST_F(Devices, AreThoseOfTheWantedIdentifiers) {
    plug(1);
    plug(2, "Merlin", 6);
    plug(3, "Mouse", 5, 0x046D);
    const std::int32_t counts[][3] = {{0x1209, 5, 1}, {0x1209, -1, 2}, {-1, 5, 2}, {-1, -1, 3}};
    for (const auto& [vendor, product, count] : counts) {
        EXPECT_EQ(vellNumberOfDevice(create(vendor, product)), count) << vendor << " " << product;
    }
    const auto handle = create();
    EXPECT_TRUE(vellAddNewUSBID(handle, 0x1209, 6) && !vellAddNewUSBID(handle, 0x1209, 0x10000));
    EXPECT_EQ(dispatched(handle), Texts({"18:1:HID2 Merlin"}));
    EXPECT_EQ(names(handle), Texts({"HID1 Kestrel", "HID2 Merlin"}));
    EXPECT_FALSE(vellDeviceIsUSBID(handle, "HID1", 0x1209, 21));
    EXPECT_EQ(vellCreate(0x10000, 5), 0);
    bus.isOutOfOrder(true);
    EXPECT_EQ(vellCreate(0x1209, 5), 0);
}

TEST_F(Devices, AreFoundByNameTextAndPath) {
    plug(4, "Kestrel (HID1)");
    const auto handle = create();
    for (const char* device : {"HID1", "hid1", "HID1 Kestrel (HID1)", "/dev/hidraw4"}) {
        EXPECT_STREQ(vellGetDeviceProduct(handle, device), "Kestrel (HID1)") << device;
    }
    for (const char* device : {"HID2", "HID", "", "HID1 ", "/dev/hidraw5"}) {
        EXPECT_FALSE(vellOpen(handle, device)) << device;
        EXPECT_STREQ(vellGetParamString(handle), "there is no device of that name");
    }
    for (const std::int32_t index : {-1, 1, 1000000}) EXPECT_STREQ(vellEnumDeviceName(handle, index), "");
    vellSetDevicePrefix(handle, "USB");
    EXPECT_STREQ(vellEnumDeviceName(handle, 0), "USB1");
    EXPECT_TRUE(vellOpen(handle, "usb1"));
}

TEST_F(Devices, KeepTheirNumberAndNewcomersTakeTheLowestFreeOne) {
    for (const int place : {1, 2, 3}) plug(place);
    const auto handle = create();
    bus.unplug(path(2));
    bus.unplug(path(1));
    EXPECT_EQ(names(handle), Texts({"HID3 Kestrel"}));
    plug(9, "Two\r\nLines\x1B[2J");  // control characters do not get into logs
    EXPECT_EQ(names(handle), Texts({"HID1 Two  Lines [2J", "HID3 Kestrel"}));
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "17:1:HID2 Kestrel", "16:0:HID1 Two  Lines [2J"}));
}

TEST_F(Devices, ComeAndGoWithEventsFromDispatchOnly) {
    const auto handle = create();
    plug(1);
    now = 499;  // the library looks twice a second
    EXPECT_FALSE(vellService(handle));
    now = 500;
    EXPECT_TRUE(vellService(handle) && events.empty());
    EXPECT_EQ(dispatched(handle), Texts({"16:0:HID1 Kestrel"}));
    for (const std::int32_t ms : {20, -1}) vellSetScanTiming(handle, ms);
    EXPECT_EQ(vellGetScanTiming(handle), 20);
    bus.unplug(path(1));
    plug(1, "Other");
    now = 520;
    EXPECT_TRUE(vellService(handle));
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "16:0:HID1 Other"}));
    bus.tellsChanges(false);  // a system without the plug events
    EXPECT_TRUE(vellCheckDevicesIsChanged(handle, -1) && !vellCheckDevicesIsChanged(handle, -1));
    plug(2);
    EXPECT_TRUE(vellCheckDevicesIsChanged(handle, 0));
    EXPECT_EQ(events.size(), 2u) << "nothing is called back";
    EXPECT_FALSE(vellCheckDevicesIsChanged(handle, -1));
    EXPECT_EQ(events.back(), "16:1:HID2 Kestrel");
}

TEST_F(Devices, TakeTheirHandleAwayInTheMiddleOfADelivery) {
    const auto destroy = [](std::int32_t hVell, std::intptr_t user, std::int32_t, std::int32_t) -> std::int32_t {
        vellDestroy(hVell);
        return ++*reinterpret_cast<std::int32_t*>(user);
    };
    std::int32_t calls = 0;
    const auto handle = create();
    vellSetCallBackProc(handle, destroy, reinterpret_cast<std::intptr_t>(&calls));
    plug(1);
    plug(2);
    EXPECT_EQ(vellNumberOfDevice(handle), 2);
    vellDispatch(handle);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(vellNumberOfDevice(handle) + vellService(handle) + vellGetEvent(handle), -1);
}

TEST_F(Devices, EventsThatNobodyTakesDoNotPileUp) {
    const auto handle = create();
    for (int i = 0; i < 1000; ++i) {
        plug(1);
        vellNumberOfDevice(handle);
        bus.unplug(path(1));
        vellNumberOfDevice(handle);
    }
    EXPECT_EQ(vellGetEvent(handle), 16);
    EXPECT_STREQ(vellGetParamString(handle), "HID1 Kestrel");
    EXPECT_EQ(dispatched(handle).size(), 255u);
    EXPECT_EQ(events.back(), "17:0:HID1 Kestrel");
    EXPECT_EQ(vellGetEvent(handle), -1);
}

struct Streams : Devices {
    Streams() {
        plug(1);
        handle_ = create();
        EXPECT_TRUE(vellOpen(handle_, "HID1"));
        vellDispatch(handle_);
    }

    /// The reports that went out, each without the zeros at its end.
    Reports sent() {
        Reports result;
        for (const auto& report : std::exchange(peer.heard, {})) {
            result.emplace_back(report.begin(), report.end());
            while (!result.back().empty() && result.back().back() == 0) result.back().pop_back();
        }
        return result;
    }

    std::int32_t write(const std::string& text) const {
        return vellWritePtr(handle_, text.data(), static_cast<std::int32_t>(text.size()));
    }

    std::string read(std::size_t count) const {
        std::string text(count, '?');
        text.resize(static_cast<std::size_t>(vellReadPtr(handle_, text.data(), static_cast<std::int32_t>(count))));
        return text;
    }

    Texts dispatched() { return Devices::dispatched(handle_); }

    std::int32_t handle_ = 0;
};

TEST_F(Streams, DataGoesOutInReportsOf62BytesAsTheDeviceTakesThem) {
    EXPECT_EQ(write("A" + std::string(124, 'x')), 125);
    const auto reports = sent();
    EXPECT_EQ(Bytes(reports.at(0).begin(), reports[0].begin() + 4), Bytes({1, 62, 'A', 'x'}));
    EXPECT_EQ(reports[0].size() + reports.at(1).size(), 128u);
    EXPECT_EQ(reports.at(2), Bytes({1, 1, 'x'}));
    EXPECT_EQ(dispatched(), Texts({"2:0:"}));
    peer.room = 1;
    write(std::string(100, 'x'));
    EXPECT_EQ(vellBytesToWrite(handle_), 38);
    EXPECT_EQ(dispatched(), Texts());
    write("yz");
    peer.room = 1;
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
    EXPECT_EQ(peer.heard.back()[1], 40);
    peer.room = 0;
    write("lost");
    vellDiscardWriteBuffer(handle_);
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
}

TEST_F(Streams, AWriteBufferThatIsFullDropsTheRest) {
    peer.room = 0;
    vellSetWriteBufferSize(handle_, 10);
    EXPECT_EQ(write("0123456789ABC"), 10);
    vellSetWriteBufferSize(handle_, 4);
    EXPECT_EQ(dispatched(), Texts({"3:9:"}));
    peer.room = -1;
    vellService(handle_);
    EXPECT_EQ(sent(), Reports({{1, 4, '0', '1', '2', '3'}}));
    vellSetWriteBufferSize(handle_, 2048);
    EXPECT_TRUE(vellGetAsyncIO(handle_));
    vellSetAsyncIO(handle_, 0);
    peer.room = 0;  // it takes what it is given time for
    write(std::string(100, 'x'));
    EXPECT_EQ(peer.heard.size() * 1000 + static_cast<std::size_t>(vellBytesToWrite(handle_)), 2000u);
}

TEST_F(Streams, DataComesInAndIsRead) {
    peer.say({1, 3, 'a', 'b', 'c'});
    peer.say({1, 1, 'd'});
    EXPECT_TRUE(vellService(handle_) && !vellService(handle_));
    EXPECT_EQ(dispatched(), Texts({"0:4:"}));
    EXPECT_EQ(read(3) + "." + read(3), "abc.d");
    std::uint8_t array[6] = {9, 9, 9, 9, 9, 9};
    peer.say({1, 4, 'e', 'f', 'g', 'h'});
    EXPECT_EQ(vellRead(handle_, array, 6, 2, 3), 3);
    EXPECT_EQ(Bytes(array, array + 6), Bytes({9, 9, 'e', 'f', 'g', 9}));
    EXPECT_EQ(vellRead(handle_, array, 6, 4, 0), 1);
    EXPECT_EQ(vellRead(handle_, array, 6, 5, 2) + vellRead(handle_, array, 6, -1, 1), 0);
    EXPECT_EQ(vellRead(handle_, nullptr, 6, 0, 1), 0);
    peer.say({1, 62}, 40);  // more than one round takes in
    vellDiscardReadBuffer(handle_);
    EXPECT_EQ(vellBytesToRead(handle_), 0);
    dispatched();
    for (const Bytes& nonsense : {Bytes{0, 5, 1}, {4, 5, 1}, {1, 63, 'x'}, {1, 0}, {3, 0, 1}}) peer.say(nonsense);
    EXPECT_FALSE(vellService(handle_));
    EXPECT_EQ(dispatched(), Texts());
}

TEST_F(Streams, AReadBufferNeverExceedsItsSize) {
    vellSetReadBufferSize(handle_, 100);
    peer.say({1, 62, 0, 1, 2, 3, 4, 5, 6}, 2);
    vellService(handle_);
    EXPECT_EQ(dispatched(), Texts({"0:100:", "1:24:"}));
    for (int i = 0; i < 3; ++i) {
        peer.say({1, 10});
        vellService(handle_);
    }
    EXPECT_EQ(dispatched(), Texts({"1:30:"})) << "one event for all of them";
    vellSetReadBufferSize(handle_, 7);
    EXPECT_EQ(dispatched(), Texts({"1:93:"}));
    EXPECT_EQ(read(100), std::string("\0\1\2\3\4\5\6", 7));
    for (const std::int32_t size : {0, -1, 1048577}) {
        vellSetReadBufferSize(handle_, size);
        vellSetWriteBufferSize(handle_, size);
    }
    EXPECT_EQ(vellGetReadBufferSize(handle_) * 10000 + vellGetWriteBufferSize(handle_), 72048);
    peer.say({2, 62}, 20);
    vellService(handle_);
    EXPECT_EQ(dispatched(), Texts({"4:1024:", "5:216:"}));
}

TEST_F(Streams, TheControlChannelIsBesideTheDataAndQueuesMessagesWholeOrNotAtAll) {
    const Bytes message(600, 7);
    EXPECT_TRUE(vellWriteCtrl(handle_, message.data(), 600, 0, 2));
    write("A");
    EXPECT_EQ(sent(), Reports({{2, 2, 7, 7}, {1, 1, 'A'}}));
    peer.say({2, 3, 6, 1, 'V'});
    peer.say({1, 1, 'B'});
    vellService(handle_);
    EXPECT_EQ(dispatched(), Texts({"6:0:", "2:0:", "4:3:", "0:1:"}));
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 3);
    std::uint8_t status[3] = {};
    EXPECT_EQ(vellReadCtrl(handle_, status, 2, 0, 0) + vellReadCtrlPtr(handle_, status + 2, 1), 3);
    EXPECT_EQ(Bytes(status, status + 3), Bytes({6, 1, 'V'}));
    peer.say({2, 1, 'X'});
    vellDiscardReadCtrlBuffer(handle_);
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 0);
    EXPECT_EQ(read(9), "B");
    dispatched();

    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 130));  // each report says whether more follows
    EXPECT_EQ(Bytes({peer.heard.at(0)[1], peer.heard.at(1)[1], peer.heard.at(2)[1]}), Bytes({0x80 | 62, 0x80 | 62, 6}));
    peer.room = 0;
    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 600) && !vellWriteCtrlPtr(handle_, message.data(), 600));
    EXPECT_EQ(dispatched(), Texts({"6:0:", "7:600:"}));
    peer.room = 1;
    vellService(handle_);
    vellDiscardWriteCtrlBuffer(handle_);  // the reader has heard its beginning, so it must hear the end
    EXPECT_EQ(vellBytesToWriteCtrl(handle_), 538);
    EXPECT_FALSE(vellWriteCtrlPtr(handle_, message.data(), 0));
}

TEST_F(Streams, LineStatesCrossBothWays) {
    vellSetBreak(handle_, 0);
    vellSetBreak(handle_, -1);
    EXPECT_TRUE(vellGetBreak(handle_));
    vellSetBreak(handle_, 0);
    EXPECT_EQ(sent(), Reports({{3, 1, 1}, {3, 1}}));
    peer.say({3, 1, 1}, 2);
    EXPECT_TRUE(vellGetCTSHolding(handle_));
    EXPECT_EQ(dispatched(), Texts({"35:1:"}));
    vellClose(handle_);
    EXPECT_FALSE(vellGetCTSHolding(handle_));
}

TEST_F(Streams, SingleReportsFeaturesAndTexts) {
    std::uint8_t report[64] = {2};
    EXPECT_TRUE(vellGetInputReport(handle_, report, 64, 0, 0));
    EXPECT_EQ(report[1], 0x11);
    EXPECT_TRUE(vellGetFeature(handle_, report, 64, 0, 0) && vellGetFeaturePtr(handle_, report, 64));
    EXPECT_EQ(report[1], 0xFE);
    EXPECT_TRUE(vellSetFeaturePtr(handle_, report, 64) && vellSetOutputReport(handle_, report, 64, 0, 64) &&
                vellSetOutputReportPtr(handle_, report, 64));
    EXPECT_EQ(sent(), Reports(3, {2, 0xFE}));
    EXPECT_FALSE(vellGetFeature(handle_, report, 63, 0, 0) || vellSetOutputReport(handle_, report, 64, 1, 0));
    report[0] = 0;
    EXPECT_FALSE(vellGetInputReportPtr(handle_, report, 64));
    const char* const texts[] = {"", "Corvane", "Kestrel", "K1", ""};
    for (std::int32_t i = 0; i < 5; ++i) EXPECT_STREQ(vellGetIndexedString(handle_, i), texts[i]);
}

TEST_F(Streams, OneRoundTakesSoManyReports) {
    peer.say({1, 1}, 10);
    EXPECT_TRUE(vellSetNumberInputBuffers(handle_, 4));
    vellService(handle_);
    EXPECT_EQ(peer.toSay.size(), 6u);
    EXPECT_TRUE(vellFlushQueue(handle_));
    EXPECT_EQ(vellBytesToRead(handle_), 4);
    EXPECT_FALSE(vellSetNumberInputBuffers(handle_, 1) || vellSetNumberInputBuffers(handle_, 513));
    for (const std::int32_t ms : {50, 0}) vellSetRequestTimeout(handle_, ms);
    std::int32_t count = 0;
    EXPECT_TRUE(vellGetNumberInputBuffers(handle_, &count));
    EXPECT_EQ(count * 100 + vellGetRequestTimeout(handle_), 450);
}

TEST_F(Streams, OpenAndCloseAlsoWhenTheDeviceIsUnplugged) {
    plug(2, "Second");
    peer.say({1, 3});
    vellService(handle_);
    EXPECT_TRUE(vellOpen(handle_, "/dev/hidraw1"));  // it is open already
    EXPECT_EQ(vellBytesToRead(handle_), 3);
    EXPECT_TRUE(vellOpen(handle_, "HID2") && vellIsHIDIOReady(handle_));
    EXPECT_EQ(vellBytesToRead(handle_) + bus.openDevices(), 1);
    vellClose(handle_);
    vellClose(handle_);
    EXPECT_FALSE(vellIsOpen(handle_));
    EXPECT_EQ(dispatched(),
              Texts({"0:3:", "16:1:HID2 Second", "9:0:HID1 Kestrel", "8:1:HID2 Second", "9:1:HID2 Second"}));
    EXPECT_EQ(write("x"), 0);
    bus.forbid("/dev/hidraw2");
    EXPECT_FALSE(vellOpen(handle_, "HID2"));
    EXPECT_STREQ(vellGetParamString(handle_), "/dev/hidraw2: Permission denied");

    EXPECT_TRUE(vellOpen(handle_, "HID1"));
    dispatched();
    bus.unplug("/dev/hidraw1");
    EXPECT_TRUE(vellService(handle_));
    EXPECT_FALSE(vellIsOpen(handle_) || vellIsHIDIOReady(handle_) || bus.openDevices());
    EXPECT_EQ(dispatched(), Texts({"9:0:HID1 Kestrel", "17:0:HID1 Kestrel"}));
    plug(1);
    EXPECT_TRUE(vellOpen(handle_, "HID1"));
    vellService(handle_);
    EXPECT_TRUE(vellIsOpen(handle_));
    peer.plugged = false;  // it fails in the middle of a write, before the system tells
    EXPECT_EQ(write("x"), 1);
    EXPECT_FALSE(vellIsOpen(handle_));
}

}  // namespace corvane::tests
