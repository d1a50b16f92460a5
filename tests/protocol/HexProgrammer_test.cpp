#include "protocol/HexProgrammer.h"

#include "Dialogue.h"
#include "support/FakeSystem.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

using Records = std::vector<std::string>;

const std::string kAt0 = ":0400000001020304F2", kAt16 = ":0400100005060708D2", kAt32 = ":04002000090A0B0CB2";
const std::string kToFirst = ":020000040000FA", kToSecond = ":020000040001F9";
const std::string kStart9 = ":0400000901020304E9", kStart5 = ":0400000500000020D7", kEnd = ":00000001FF";

struct Programmer : Dialogue {
    bool program(const Records& lines, const std::string& end = "\n") {
        std::string content;
        for (const auto& line : lines) content += line + end;
        return programmer.ISP_Program(Image("x.hex", content, digest));
    }

    fakes::FakeDigest digest;
    HexProgrammer programmer{session, face, digest};
};

TEST_P(Programmer, SendsTheStartAfterItsSegmentAndTheEndLastAndTriesEachThreeTimes) {
    const struct {
        const char* name;
        Records file, wire;
        std::vector<std::string> faults = {};
        int repeated = 0;
        std::string log = "Programming... < OK\r\n";
    } cases[] = {
        {"one segment", {kAt0, kAt16, kAt32, kEnd}, {kAt16, kAt32, kAt0, kEnd}},
        {"out of order", {kAt32, kEnd, kAt0, kAt16}, {kAt32, kAt16, kAt0, kEnd}},
        {"two segments",
         {kToFirst, kAt0, kAt16, kToSecond, kAt0, kAt16, kStart5, kEnd},
         {kToFirst, kAt16, kAt0, kToSecond, kAt0, kAt16, kStart5, kEnd}},
        {"back in the first segment",
         {kAt16, kToSecond, kAt16, kToFirst, kAt0, kAt32, kToSecond, kAt0, kEnd},
         {kAt16, kToSecond, kAt16, kToFirst, kAt32, kAt0, kToSecond, kAt0, kEnd}},
        {"the start as type 9", {kStart9, kAt16, kEnd}, {kAt16, kStart9, kEnd}},
        {"a second start replaces the first", {kAt0, kStart9, kAt16, kEnd}, {kAt16, kStart9, kEnd}},
        {"no end", {kAt0, kAt16}, {kAt16, kAt0}},
        {"only an end", {kEnd}, {kEnd}},
        {"other lines", {"[INFO]", "", " " + kAt32, "; " + kAt0, kAt16, kEnd}, {kAt16, kEnd}},
        {"refused and unanswered",
         {kAt0, kAt16, kEnd},
         {kAt16, kAt16, kAt16, kAt0, kEnd, kEnd},
         {"nak@:0400100005060708D2x2", "mute@:00000001FFx1"},
         2},
        {"refused too often",
         {kAt0, kAt16, kEnd},
         {kAt16, kAt16, kAt16},
         {"nak@:0400100005060708D2x*"},
         1,
         "Programming... < NG\r\n"},
    };
    for (const auto& one : cases) {
        for (const char* end : {"\n", "\r\n", "\r"}) {
            connect(bootLoader());
            for (const auto& fault : one.faults) device->faults().add(fault);
            programmer.beginDevice();
            program(one.file, end);
            EXPECT_EQ(device->log().records, one.wire) << one.name;
            EXPECT_EQ(programmer.repeatedRecords(), one.repeated) << one.name;
            EXPECT_EQ(face.log, one.log) << one.name;
            EXPECT_EQ(face.bar.back(), (std::pair<std::int64_t, std::int64_t>{0, 0})) << one.name;
        }
    }
}

TEST_P(Programmer, SendsAllRecordsAlsoThoseThatAreNotStored) {
    if (isHid()) return;  // nothing about a port in it, and it takes its time
    connect(bootLoader());
    EXPECT_TRUE(program(Records(Image::kMostStored + 2, kAt16)));
    EXPECT_EQ(device->log().records.size(), 32770U);
}

TEST_P(Programmer, CountsTheBytesOfRecordsInAFile) {
    connect(bootLoader());
    const std::string content = "[INFO]\n\n" + kAt0 + "\n; made by hand\n" + kAt16 + "\n" + kEnd;
    const auto size = static_cast<std::int64_t>(content.size());
    const fakes::ScratchFolder folder;
    EXPECT_TRUE(programmer.ISP_Program(folder.file("image.hex", content)));
    EXPECT_EQ(face.bar, (decltype(face.bar){{0, size}, {21, size}, {42, size}, {55, size}, {0, 0}}));
    face.log.clear();
    EXPECT_FALSE(programmer.ISP_Program(folder.at("none.hex")));
    EXPECT_EQ(face.log, "Programming... < NG(File not found)\r\n");
}

TEST_P(Programmer, WaitsHalfASecondForEachAnswer) {
    // 1.2 s, but never 0.5 s of silence
    connect(bootLoader({"dots@:0400100005060708D2=4", "mute@:00000001FFx*"}));
    EXPECT_FALSE(program({kAt16, kEnd}));
    EXPECT_EQ(device->log().records, (Records{kAt16, kEnd, kEnd, kEnd}));
    expectMs(1200 + 8000, 1200 + 8000 + 250);  // and 1.5 s after each silence, for what may be owed
    connect(bootLoader({"nak@:0400100005060708D2x1"}));
    EXPECT_TRUE(programmer.ProgramHex(kAt16, true));
    EXPECT_EQ(face.log, kAt16 + " < NG\r\n" + kAt16 + " < OK\r\n");
}

TEST_P(Programmer, KnowsWhenAnAnswerIsDueOnceItHasSeenSome) {
    for (const auto* delay : {"delay=40", "delay=25"}) {
        connect(bootLoader({delay}));
        programmer.beginDevice();
        EXPECT_TRUE(program(Records(20, kAt16)));
        EXPECT_EQ(bench.runtime.expected(), bench.runtime.micros()) << delay;  // the last one came just now
    }
}

TEST_P(Programmer, LogsWhyItCouldNotGoOn) {
    connect(bootLoader());
    for (const char* line : {":", ":zz000000", ":0400zz00", ":040010", ":04001 00", ":02000004", ":02000004zzzz"}) {
        face.log.clear();
        EXPECT_FALSE(program({line, kEnd}));
        EXPECT_EQ(face.log, "Programming... < NG(Type mismatch)\r\n") << line;
    }
    EXPECT_TRUE(device->log().records.empty());
    connect(bootLoader({"unplug@:04002000090A0B0CB2"}));
    EXPECT_FALSE(program({kAt16, kAt32, kAt0, kEnd}));
    // A HID port has no errors: what is written to it when it is lost goes nowhere, and nothing answers.
    EXPECT_EQ(face.log, isHid() ? "Programming... < NG\r\n" : "Programming... < NG(The port was lost)\r\n");
    expectMs(0, 200);
}

CORVANE_OVER_EACH_PORT(Programmer);

TEST(SendPlan, KnowsWhichAddressGovernsARecord) {
    const auto content = kAt16 + "\n" + kToSecond + "\n" + kAt16 + "\n" + kToFirst + "\n" + kAt32;
    std::string places;
    for (const auto& step : SendPlan::of(content).steps) places += std::string(step.place) + " ";
    EXPECT_EQ(places, " " + kToSecond + " " + kToSecond + "   ") << "none in the first segment";
}

TEST(AnswerClock, CountsWhatIsStillOnTheLine) {
    fakes::FakeRuntime runtime;
    AnswerClock clock(runtime);
    clock.beginDevice(true);
    clock.settings("9600,N,8,1");
    for (int i = 0; i < 2; ++i) clock.sent(96);
    EXPECT_NEAR(clock.untilCrossed(), 0.2, 0.001);
}

}  // namespace corvane::tests
