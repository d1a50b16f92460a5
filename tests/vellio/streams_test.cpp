#include "vellio/Bench.h"

namespace corvane {
namespace {

class Streams : public VellBench {
protected:
    /// The reports that went out, each without the zeros at its end.
    std::vector<Bytes> sent() {
        std::vector<Bytes> result;
        for (const auto& report : peer_.heard) {
            Bytes bytes(report.begin(), report.end());
            while (!bytes.empty() && bytes.back() == 0) bytes.pop_back();
            result.push_back(bytes);
        }
        peer_.heard.clear();
        return result;
    }

    ScriptedPeer peer_;
    std::int32_t handle_ = opened(peer_);
};

TEST_F(Streams, DataGoesOutInReportsOf62Bytes) {
    EXPECT_EQ(write(handle_, "AB"), 2);
    EXPECT_EQ(sent(), std::vector<Bytes>({{1, 2, 'A', 'B'}}));
    EXPECT_EQ(write(handle_, std::string(125, 'x')), 125);
    const auto reports = sent();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0][1], 62);
    EXPECT_EQ(reports[1][1], 62);
    EXPECT_EQ(reports[2], Bytes({1, 1, 'x'}));
    EXPECT_EQ(dispatched(handle_), Texts({"2:0:"}));
}

TEST_F(Streams, WhatTheDeviceDoesNotTakeYetWaits) {
    peer_.room = 1;
    write(handle_, std::string(100, 'x'));
    EXPECT_EQ(vellBytesToWrite(handle_), 38);
    EXPECT_EQ(dispatched(handle_), Texts());
    write(handle_, "yz");
    peer_.room = 1;
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
    EXPECT_EQ(peer_.heard.back()[1], 40);
    peer_.room = 0;
    write(handle_, "lost");
    vellDiscardWriteBuffer(handle_);
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
}

TEST_F(Streams, AWriteBufferThatIsFullDropsTheRest) {
    peer_.room = 0;
    vellSetWriteBufferSize(handle_, 10);
    EXPECT_EQ(write(handle_, "0123456789ABC"), 10);
    EXPECT_EQ(vellBytesToWrite(handle_), 10);
    EXPECT_EQ(dispatched(handle_), Texts({"3:3:"}));
    vellSetWriteBufferSize(handle_, 4);
    EXPECT_EQ(dispatched(handle_), Texts({"3:6:"}));
    peer_.room = -1;
    vellService(handle_);
    EXPECT_EQ(sent(), std::vector<Bytes>({{1, 4, '0', '1', '2', '3'}}));
}

TEST_F(Streams, WithoutAsyncIOAWriteReturnsWhenAllIsTaken) {
    EXPECT_TRUE(vellGetAsyncIO(handle_));
    vellSetAsyncIO(handle_, 0);
    peer_.room = 0;  // it takes what it is given time for
    write(handle_, std::string(100, 'x'));
    EXPECT_EQ(peer_.heard.size(), 2u);
    EXPECT_EQ(vellBytesToWrite(handle_), 0);
}

TEST_F(Streams, DataComesInAndIsRead) {
    peer_.say({1, 3, 'a', 'b', 'c'});
    peer_.say({1, 1, 'd'});
    EXPECT_TRUE(vellService(handle_));
    EXPECT_FALSE(vellService(handle_));
    EXPECT_EQ(dispatched(handle_), Texts({"0:4:"}));
    EXPECT_EQ(vellBytesToRead(handle_), 4);
    EXPECT_EQ(read(handle_, 3), "abc");
    EXPECT_EQ(read(handle_, 3), "d");
    std::uint8_t array[6] = {9, 9, 9, 9, 9, 9};
    peer_.say({1, 4, 'e', 'f', 'g', 'h'});
    EXPECT_EQ(vellRead(handle_, array, 6, 2, 3), 3);
    EXPECT_EQ(Bytes(array, array + 6), Bytes({9, 9, 'e', 'f', 'g', 9}));
    EXPECT_EQ(vellRead(handle_, array, 6, 4, 0), 1);
    EXPECT_EQ(vellRead(handle_, array, 6, 5, 2), 0);
    EXPECT_EQ(vellRead(handle_, array, 6, -1, 1), 0);
    EXPECT_EQ(vellRead(handle_, nullptr, 6, 0, 1), 0);
    for (int i = 0; i < 40; ++i) peer_.sayData(62);  // more than one round takes in
    vellDiscardReadBuffer(handle_);
    EXPECT_EQ(vellBytesToRead(handle_), 0);
}

TEST_F(Streams, AReadBufferNeverExceedsItsSize) {
    vellSetReadBufferSize(handle_, 100);
    peer_.sayData(62);
    peer_.sayData(62);
    vellService(handle_);
    EXPECT_EQ(vellBytesToRead(handle_), 100);
    EXPECT_EQ(dispatched(handle_), Texts({"0:100:", "1:24:"}));
    for (int i = 0; i < 3; ++i) {
        peer_.sayData(10);
        vellService(handle_);
    }
    EXPECT_EQ(dispatched(handle_), Texts({"1:30:"})) << "one event for all of them";
    vellSetReadBufferSize(handle_, 7);
    EXPECT_EQ(dispatched(handle_), Texts({"1:93:"}));
    EXPECT_EQ(read(handle_, 100), std::string("\0\1\2\3\4\5\6", 7));
    for (const std::int32_t size : {0, -1, 1048577}) vellSetReadBufferSize(handle_, size);
    EXPECT_EQ(vellGetReadBufferSize(handle_), 7);
}

TEST_F(Streams, TheControlChannelIsBesideTheData) {
    const std::uint8_t frame[] = {4, 0};
    EXPECT_TRUE(vellWriteCtrl(handle_, frame, 2, 0, 0));
    write(handle_, "A");
    EXPECT_EQ(sent(), std::vector<Bytes>({{2, 2, 4}, {1, 1, 'A'}}));
    peer_.say({2, 3, 6, 1, 'V'});
    peer_.say({1, 1, 'B'});
    vellService(handle_);
    EXPECT_EQ(dispatched(handle_), Texts({"6:0:", "2:0:", "4:3:", "0:1:"}));
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 3);
    std::uint8_t status[2] = {};
    EXPECT_EQ(vellReadCtrl(handle_, status, 2, 0, 0), 2);
    EXPECT_EQ(status[0], 6);
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 1);
    vellDiscardReadCtrlBuffer(handle_);
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 0);
    EXPECT_EQ(read(handle_, 9), "B");
}

TEST_F(Streams, AControlMessageSaysWhereItEnds) {
    const Bytes message(130, 7);
    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 130));
    const auto reports = sent();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0][1], 0x80 | 62);
    EXPECT_EQ(reports[1][1], 0x80 | 62);
    EXPECT_EQ(reports[2][1], 6);
}

TEST_F(Streams, AControlMessageIsQueuedWholeOrNotAtAll) {
    peer_.room = 0;
    const Bytes message(600, 7);
    EXPECT_TRUE(vellWriteCtrlPtr(handle_, message.data(), 600));
    EXPECT_FALSE(vellWriteCtrlPtr(handle_, message.data(), 600));
    EXPECT_EQ(vellBytesToWriteCtrl(handle_), 600);
    EXPECT_EQ(dispatched(handle_), Texts({"7:600:"}));
    peer_.room = 1;
    vellService(handle_);
    vellDiscardWriteCtrlBuffer(handle_);  // the reader has heard its beginning, so it must hear the end
    EXPECT_EQ(vellBytesToWriteCtrl(handle_), 538);
    EXPECT_FALSE(vellWriteCtrlPtr(handle_, message.data(), 0));
}

TEST_F(Streams, TheControlBufferIsBoundedToo) {
    for (int i = 0; i < 20; ++i) peer_.say({2, 62});
    vellService(handle_);
    EXPECT_EQ(vellBytesToReadCtrl(handle_), 1024);
    EXPECT_EQ(dispatched(handle_), Texts({"4:1024:", "5:216:"}));
}

TEST_F(Streams, ReportsWithoutSenseAreDropped) {
    peer_.say({0, 5, 1});
    peer_.say({4, 5, 1});
    peer_.say({255, 255});
    peer_.say({1, 63, 'x'});
    peer_.say({1, 0});
    peer_.say({3, 0, 1});
    EXPECT_FALSE(vellService(handle_));
    EXPECT_EQ(dispatched(handle_), Texts());
    EXPECT_EQ(vellBytesToRead(handle_), 0);
}

TEST_F(Streams, LineStatesCrossBothWays) {
    vellSetBreak(handle_, 0);
    EXPECT_EQ(sent(), std::vector<Bytes>());
    vellSetBreak(handle_, -1);
    EXPECT_TRUE(vellGetBreak(handle_));
    vellSetBreak(handle_, 0);
    EXPECT_EQ(sent(), std::vector<Bytes>({{3, 1, 1}, {3, 1}}));
    EXPECT_FALSE(vellGetCTSHolding(handle_));
    peer_.say({3, 1, 1});
    peer_.say({3, 1, 1});
    EXPECT_TRUE(vellGetCTSHolding(handle_));
    EXPECT_EQ(dispatched(handle_), Texts({"35:1:"}));
    vellClose(handle_);
    EXPECT_FALSE(vellGetCTSHolding(handle_));
}

TEST_F(Streams, SingleReportsAndFeatures) {
    std::uint8_t report[64] = {2};
    EXPECT_TRUE(vellGetInputReport(handle_, report, 64, 0, 0));
    EXPECT_EQ(report[1], 0x11);
    EXPECT_TRUE(vellGetFeature(handle_, report, 64, 0, 0));
    EXPECT_EQ(report[1], 0xFE);
    EXPECT_TRUE(vellSetFeaturePtr(handle_, report, 64));
    EXPECT_EQ(peer_.feature[1], 0xFE);
    EXPECT_TRUE(vellSetOutputReport(handle_, report, 64, 0, 64));
    EXPECT_EQ(sent(), std::vector<Bytes>({{2, 0xFE}}));
    EXPECT_FALSE(vellGetFeature(handle_, report, 63, 0, 0));
    EXPECT_FALSE(vellSetOutputReport(handle_, report, 64, 1, 0));
    report[0] = 0;
    EXPECT_FALSE(vellGetInputReportPtr(handle_, report, 64));
}

TEST_F(Streams, OneRoundTakesSoManyReports) {
    for (int i = 0; i < 10; ++i) peer_.sayData(1);
    EXPECT_TRUE(vellSetNumberInputBuffers(handle_, 4));
    vellService(handle_);
    EXPECT_EQ(peer_.toSay.size(), 6u);
    EXPECT_TRUE(vellFlushQueue(handle_));
    EXPECT_EQ(vellBytesToRead(handle_), 4);
    for (const std::int32_t count : {1, 513}) EXPECT_FALSE(vellSetNumberInputBuffers(handle_, count));
    std::int32_t count = 0;
    EXPECT_TRUE(vellGetNumberInputBuffers(handle_, &count));
    EXPECT_EQ(count, 4);
}

TEST_F(Streams, TextsOfTheOpenDevice) {
    const char* const texts[] = {"", "Corvane", "Kestrel", "K1", ""};
    for (std::int32_t i = 0; i < 5; ++i) EXPECT_STREQ(vellGetIndexedString(handle_, i), texts[i]);
    vellClose(handle_);
    EXPECT_STREQ(vellGetIndexedString(handle_, 2), "");
}

TEST_F(Streams, OpeningAndClosing) {
    ScriptedPeer second;
    bus.plug(info(2, 5, "Second"), second);
    peer_.sayData(3);
    vellService(handle_);
    EXPECT_TRUE(vellOpen(handle_, "/dev/hidraw1"));  // it is open already
    EXPECT_EQ(vellBytesToRead(handle_), 3);
    EXPECT_TRUE(vellOpen(handle_, "HID2"));
    EXPECT_EQ(vellBytesToRead(handle_), 0);
    EXPECT_EQ(bus.openDevices(), 1);
    vellClose(handle_);
    vellClose(handle_);
    EXPECT_FALSE(vellIsOpen(handle_));
    EXPECT_EQ(dispatched(handle_),
              Texts({"0:3:", "16:1:HID2 Second", "9:0:HID1 Kestrel", "8:1:HID2 Second", "9:1:HID2 Second"}));
    EXPECT_EQ(write(handle_, "x"), 0);
    bus.forbid("/dev/hidraw2");
    EXPECT_FALSE(vellOpen(handle_, "HID2"));
    EXPECT_STREQ(vellGetParamString(handle_), "/dev/hidraw2: Permission denied");
}

TEST_F(Streams, AnUnpluggedDeviceClosesByItselfAndOpensAgain) {
    EXPECT_TRUE(vellIsHIDIOReady(handle_));
    bus.unplug("/dev/hidraw1");
    EXPECT_TRUE(vellService(handle_));
    EXPECT_FALSE(vellIsOpen(handle_));
    EXPECT_FALSE(vellIsHIDIOReady(handle_));
    EXPECT_EQ(dispatched(handle_), Texts({"9:0:HID1 Kestrel", "17:0:HID1 Kestrel"}));
    EXPECT_EQ(bus.openDevices(), 0);
    bus.plug(info(1), peer_);
    EXPECT_TRUE(vellOpen(handle_, "HID1"));
    vellService(handle_);
    EXPECT_TRUE(vellIsOpen(handle_));
    peer_.plugged = false;  // it fails in the middle of a write, before the system tells
    EXPECT_EQ(write(handle_, "x"), 1);
    EXPECT_FALSE(vellIsOpen(handle_));
}

TEST_F(Streams, AHandleThatIsNoneGivesNothing) {
    std::uint8_t array[64] = {};
    EXPECT_FALSE(vellService(99));
    EXPECT_EQ(vellWrite(99, array, 64, 0, 0), 0);
    EXPECT_EQ(vellGetReadBufferSize(99), 0);
    EXPECT_FALSE(vellGetAsyncIO(99));
    EXPECT_STREQ(vellGetParamString(99), "");
    EXPECT_EQ(vellGetEvent(99), -1);
    vellDispatch(99);
    vellDestroy(99);
}

}  // namespace
}  // namespace corvane
