#include "vellio/Bench.h"

namespace corvane {
namespace {

class Streams : public VellBench {
protected:
    Streams() {
        plug(1);
        handle_ = create();
        EXPECT_TRUE(vellOpen(handle_, "HID1"));
        vellDispatch(handle_);
    }

    using Reports = std::vector<Bytes>;

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

    Texts dispatched() { return VellBench::dispatched(handle_); }

    std::int32_t handle_ = 0;
};

TEST_F(Streams, DataGoesOutInReportsOf62BytesAsTheDeviceTakesThem) {
    EXPECT_EQ(write("A" + std::string(124, 'x')), 125);
    const auto reports = sent();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(Bytes(reports[0].begin(), reports[0].begin() + 4), Bytes({1, 62, 'A', 'x'}));
    EXPECT_EQ(reports[0].size() + reports[1].size(), 128u);
    EXPECT_EQ(reports[2], Bytes({1, 1, 'x'}));
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
    EXPECT_EQ(peer.heard.size(), 2u);
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
}

TEST_F(Streams, DataComesInAndIsRead) {
    peer.say({1, 3, 'a', 'b', 'c'});
    peer.say({1, 1, 'd'});
    EXPECT_TRUE(vellService(handle_));
    EXPECT_FALSE(vellService(handle_));
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
    EXPECT_EQ(vellGetReadBufferSize(handle_), 7);
    EXPECT_EQ(vellGetWriteBufferSize(handle_), 2048);
    peer.say({2, 62}, 20);
    vellService(handle_);
    EXPECT_EQ(dispatched(), Texts({"4:1024:", "5:216:"}));
}

TEST_F(Streams, TheControlChannelIsBesideTheData) {
    const std::uint8_t frame[] = {4, 0};
    EXPECT_TRUE(vellWriteCtrl(handle_, frame, 2, 0, 0));
    write("A");
    EXPECT_EQ(sent(), Reports({{2, 2, 4}, {1, 1, 'A'}}));
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
}

TEST_F(Streams, AControlMessageSaysWhereItEndsAndIsQueuedWholeOrNotAtAll) {
    const Bytes message(600, 7);
    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 130));
    const auto reports = sent();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(Bytes({reports[0][1], reports[1][1], reports[2][1]}), Bytes({0x80 | 62, 0x80 | 62, 6}));
    peer.room = 0;
    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 600));
    EXPECT_FALSE(vellWriteCtrlPtr(handle_, message.data(), 600));
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
    EXPECT_FALSE(vellGetCTSHolding(handle_));
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
    for (const std::int32_t count : {1, 513}) EXPECT_FALSE(vellSetNumberInputBuffers(handle_, count));
    for (const std::int32_t ms : {50, 0}) vellSetRequestTimeout(handle_, ms);
    std::int32_t count = 0;
    EXPECT_TRUE(vellGetNumberInputBuffers(handle_, &count));
    EXPECT_EQ(count * 100 + vellGetRequestTimeout(handle_), 450);
}

TEST_F(Streams, OpeningAndClosing) {
    plug(2, 5, "Second");
    peer.say({1, 3});
    vellService(handle_);
    EXPECT_TRUE(vellOpen(handle_, "/dev/hidraw1"));  // it is open already
    EXPECT_EQ(vellBytesToRead(handle_), 3);
    EXPECT_TRUE(vellOpen(handle_, "HID2"));
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
}

TEST_F(Streams, AnUnpluggedDeviceClosesByItselfAndOpensAgain) {
    EXPECT_TRUE(vellIsHIDIOReady(handle_));
    bus.unplug("/dev/hidraw1");
    EXPECT_TRUE(vellService(handle_));
    EXPECT_FALSE(vellIsOpen(handle_) || vellIsHIDIOReady(handle_));
    EXPECT_EQ(dispatched(), Texts({"9:0:HID1 Kestrel", "17:0:HID1 Kestrel"}));
    EXPECT_EQ(bus.openDevices(), 0);
    plug(1);
    EXPECT_TRUE(vellOpen(handle_, "HID1"));
    vellService(handle_);
    EXPECT_TRUE(vellIsOpen(handle_));
    peer.plugged = false;  // it fails in the middle of a write, before the system tells
    EXPECT_EQ(write("x"), 1);
    EXPECT_FALSE(vellIsOpen(handle_));
}

}  // namespace
}  // namespace corvane
