#include "protocol/HexProgrammer.h"

#include <gtest/gtest.h>

#include "models/Device.h"
#include "models/PacedLine.h"
#include "support/RecordingFace.h"
#include "support/ScratchFolder.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

using Records = std::vector<std::string>;

const std::string kAt0 = ":0400000001020304F2", kAt16 = ":0400100005060708D2", kAt32 = ":04002000090A0B0CB2";
const std::string kToFirst = ":020000040000FA", kToSecond = ":020000040001F9", kToThird = ":020000040002F8";
const std::string kStart9 = ":0400000901020304E9", kStart5 = ":0400000500000020D7", kEnd = ":00000001FF";

class Programmer : public fakes::OverEachPort {
protected:
    Programmer() {
        models::DeviceOptions options;
        options.kind = models::Kind::boot;
        device = std::make_unique<models::Device>(options);
        bench.open(*device);
    }

    std::string write(const std::string& content) { return folder.file("image.hex", content); }

    bool program(const Records& lines, const std::string& end = "\n") {
        std::string content;
        for (const auto& line : lines) content += line + end;
        return programmer.ISP_Program(write(content));
    }

    fakes::ScratchFolder folder;
    std::unique_ptr<models::Device> device;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    HexProgrammer programmer{session, face};
};

TEST_P(Programmer, SendsTheStartAfterItsSegmentAndTheEndLast) {
    struct Case {
        const char* name;
        Records file, wire;
    };
    const Case cases[] = {
        {"one segment", {kAt0, kAt16, kAt32, kEnd}, {kAt16, kAt32, kAt0, kEnd}},
        {"out of order", {kAt32, kEnd, kAt0, kAt16}, {kAt32, kAt16, kAt0, kEnd}},
        {"two segments",
         {kToFirst, kAt0, kAt16, kToSecond, kAt0, kAt16, kStart5, kEnd},
         {kToFirst, kAt16, kAt0, kToSecond, kAt0, kAt16, kStart5, kEnd}},
        {"back in the first segment",
         {kAt16, kToSecond, kAt16, kToFirst, kAt0, kAt32, kToThird, kAt0, kEnd},
         {kAt16, kToSecond, kAt16, kToFirst, kAt32, kAt0, kToThird, kAt0, kEnd}},
        {"the start as type 9", {kStart9, kAt16, kEnd}, {kAt16, kStart9, kEnd}},
        {"a second start replaces the first", {kAt0, kStart9, kAt16, kEnd}, {kAt16, kStart9, kEnd}},
        {"no end", {kAt0, kAt16}, {kAt16, kAt0}},
        {"only an end", {kEnd}, {kEnd}},
    };
    for (const auto& one : cases) {
        for (const char* end : {"\n", "\r\n", "\r"}) {
            const auto before = device->log().records.size();
            EXPECT_TRUE(program(one.file, end)) << one.name;
            const auto& records = device->log().records;
            EXPECT_EQ(Records(records.begin() + static_cast<std::ptrdiff_t>(before), records.end()), one.wire)
                << one.name;
        }
    }
    EXPECT_TRUE(device->log().refused.empty());
}

TEST_P(Programmer, SkipsOtherLinesAndCountsTheRecordsOnly) {
    const std::string content = "[INFO]\nPGM=x\n\n" + kAt0 + "\n; made by hand\n " + kAt32 + "\n" + kAt16 + "\n" + kEnd;
    EXPECT_TRUE(programmer.ISP_Program(write(content)));
    EXPECT_EQ(device->log().records, (Records{kAt16, kAt0, kEnd}));
    EXPECT_EQ(face.log, "Programming... < OK\r\n");
    const auto size = static_cast<std::int64_t>(content.size());
    EXPECT_EQ(face.bar, (std::vector<std::pair<std::int64_t, std::int64_t>>{
                            {0, size}, {21, size}, {42, size}, {55, size}, {0, 0}}));
    face.bar.clear();
    EXPECT_TRUE(program({kAt16, kEnd}));  // LF: each line counts a byte more than it has
    EXPECT_EQ(face.bar[2], (std::pair<std::int64_t, std::int64_t>{32, 32}));
}

TEST_P(Programmer, TriesARecordThreeTimes) {
    device->faults().add("nak@:0400100005060708D2x2");
    device->faults().add("mute@:00000001FFx1");
    EXPECT_TRUE(program({kAt0, kAt16, kEnd}));
    EXPECT_EQ(device->log().records, (Records{kAt16, kAt16, kAt16, kAt0, kEnd, kEnd}));
    EXPECT_EQ(programmer.repeatedRecords(), 2);
}

TEST_P(Programmer, EndsAtARecordThatFailsThreeTimes) {
    device->faults().add("nak@:0400100005060708D2x*");
    EXPECT_FALSE(program({kAt0, kAt16, kAt32, kEnd}));
    EXPECT_EQ(device->log().records, (Records{kAt16, kAt16, kAt16}));
    EXPECT_EQ(face.log, "Programming... < NG\r\n");
    EXPECT_EQ(face.bar.back(), (std::pair<std::int64_t, std::int64_t>{0, 0}));
}

/// On a slow line a doubled answer comes when the next record is on its way already. Only a serial port knows that: a
/// HID reader has taken the record by then.
class PacedProgrammer : public Programmer {
protected:
    PacedProgrammer() {
        bench.port.PortOpen(false);
        models::DeviceOptions options;
        options.kind = models::Kind::boot;
        options.baud = 2400;
        device = std::make_unique<models::Device>(options);
        line = std::make_unique<models::PacedLine>(*device, 2400);
        bench.open(*line, "2400,N,8,1");
    }

    std::unique_ptr<models::PacedLine> line;
};

/// A far end that answers as it is written down.
class ScriptedProgrammer : public Programmer {
protected:
    ScriptedProgrammer() {
        bench.port.PortOpen(false);
        bench.open(peer);
    }

    fakes::ScriptedPeer peer;
};

TEST_P(PacedProgrammer, TakesNoAnswerThatComesBeforeTheRecordIsSent) {
    device->faults() = {"repeat@1", "corrupt-byte@21"};  // a doubled answer, and a second record that loses its ":"
    EXPECT_TRUE(program({kAt16, kAt32, kEnd}));
    EXPECT_EQ(device->log().records, (Records{kAt16, kAt32, kEnd}));
    EXPECT_EQ(programmer.repeatedRecords(), 1);
}

TEST_P(ScriptedProgrammer, TakesARefusalOnlyWhenSilenceFollows) {
    // A late second answer is taken for that to the next record, so the refusal of that one looks like the third's; to
    // repeat the third would hide that the second is missing.
    peer.answer(bytesOf(kAt16 + "\r"), {{1, {6}}, {15, {6}}});
    peer.answer(bytesOf(kAt32 + "\r"), {{40, {21}}});
    peer.answer(bytesOf(kEnd + "\r"), {{60, {6}}});
    EXPECT_FALSE(program({kAt16, kAt32, kEnd}));
    EXPECT_EQ(peer.heardText(), kAt16 + "\r" + kAt32 + "\r" + kEnd + "\r");
}

TEST_P(ScriptedProgrammer, WaitsForALateRefusalOfTheLastRecordAfterASilence) {
    peer.answer(bytesOf(kAt16 + "\r" + kAt16 + "\r"), {{1, {6}}, {15, {6}}});
    peer.answer(bytesOf(kEnd + "\r"), {{40, {21}}});
    EXPECT_FALSE(program({kAt16, kEnd}));
}

TEST_P(ScriptedProgrammer, SeesARefusalBehindTheLastRecord) {
    peer.answer(bytesOf(kEnd + "\r"), {{1, {6}}, {30, {21}}});
    EXPECT_TRUE(program({kEnd}));
    EXPECT_FALSE(programmer.isRefusalLeft());
    bench.runtime.Sleep(50);
    EXPECT_TRUE(programmer.isRefusalLeft());
    EXPECT_FALSE(programmer.isRefusalLeft());
}

TEST_P(Programmer, BringsTheDeviceBackToTheFirstSegmentForAnotherTry) {
    device->faults() = {"nak@:0400000001020304F2x3"};
    EXPECT_FALSE(program({kAt16, kToSecond, kAt0, kEnd}));
    EXPECT_TRUE(program({kAt16, kToSecond, kAt0, kEnd}));
    EXPECT_EQ(device->log().records,
              (Records{kAt16, kToSecond, kAt0, kAt0, kAt0, kToFirst, kAt16, kToSecond, kAt0, kEnd}));
    device->faults() = {"nak@:0400000001020304F2x3"};
    EXPECT_FALSE(program({kAt16, kToSecond, kAt0, kEnd}));
    programmer.beginDevice();
    const auto before = device->log().records.size();
    EXPECT_TRUE(program({kToFirst, kAt16, kEnd}));
    EXPECT_EQ(device->log().records.size() - before, 3U);
}

TEST_P(Programmer, WaitsHalfASecondForEachAnswer) {
    const auto start = bench.runtime.ms();
    device->faults().add("dots@:0400100005060708D2=2");  // 0.6 s, but never 0.5 s of silence
    device->faults().add("mute@:00000001FFx*");
    EXPECT_FALSE(program({kAt16, kEnd}));
    EXPECT_EQ(device->log().records, (Records{kAt16, kEnd, kEnd, kEnd}));
    EXPECT_GE(bench.runtime.ms() - start, 600 + 1500);
    EXPECT_LE(bench.runtime.ms() - start, 600 + 1500 + 250);
}

TEST_P(Programmer, ShowsTheRecordsWhenAsked) {
    device->faults().add("nak@:0400100005060708D2x1");
    EXPECT_TRUE(programmer.ProgramHex(kAt16, true));
    EXPECT_EQ(face.log, kAt16 + " < NG\r\n" + kAt16 + " < OK\r\n");
}

TEST_P(Programmer, LogsWhyItCouldNotGoOn) {
    EXPECT_FALSE(programmer.ISP_Program(folder.at("none.hex")));
    for (const char* line : {":", ":zz000000", ":0400zz00", ":040010", ":04001 00", ":02000004", ":02000004zzzz"}) {
        EXPECT_FALSE(program({line, kEnd})) << line;
    }
    std::string wanted = "Programming... < NG(File not found)\r\n";
    for (int i = 0; i < 7; ++i) wanted += "Programming... < NG(Type mismatch)\r\n";
    EXPECT_EQ(face.log, wanted);
    EXPECT_TRUE(device->log().records.empty());
}

TEST_P(Programmer, EndsAtOnceWhenThePortIsLost) {
    const auto start = bench.runtime.ms();
    device->faults().add("unplug@:04002000090A0B0CB2");
    EXPECT_FALSE(program({kAt16, kAt32, kAt0, kEnd}));
    // A HID port has no errors: what is written to it when it is lost goes nowhere, and nothing answers.
    EXPECT_EQ(face.log, isHid() ? "Programming... < NG\r\n" : "Programming... < NG(The port was lost)\r\n");
    EXPECT_LE(bench.runtime.ms() - start, 200);
}

CORVANE_OVER_EACH_PORT(Programmer);
CORVANE_OVER_EACH_PORT(ScriptedProgrammer);
INSTANTIATE_TEST_SUITE_P(, PacedProgrammer, ::testing::Values(fakes::PortKind::serial), fakes::portKindName);

}  // namespace
}  // namespace corvane
