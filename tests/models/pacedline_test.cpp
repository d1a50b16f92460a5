#include "models/PacedLine.h"

#include <gtest/gtest.h>

#include "Talk.h"

namespace corvane::models {
namespace {

Bytes chars(const char* text) { return bytesOf(std::string(text)); }

/// Notes when it hears what, and answers an "a" with three bytes.
class Recorder : public Peer {
public:
    void hear(Micros now, const Bytes& bytes, std::uint32_t) override {
        for (const auto byte : bytes) {
            heardAt.push_back(now);
            if (byte == 'a') said = {{now, fromHex("717273")}};
        }
    }
    std::optional<Micros> nextAt() const override { return said ? std::optional(said->first) : std::nullopt; }
    Bytes speak(Micros) override { return std::exchange(said, std::nullopt)->second; }
    bool isPlugged() const override { return plugged; }

    std::vector<Micros> heardAt;
    std::optional<std::pair<Micros, Bytes>> said;
    bool plugged = true;
};

TEST(PacedLine, GivesEveryByteItsTime) {
    const struct {
        std::uint32_t rate;
        std::vector<Micros> heardAt;
        Micros firstBack, allBack;
    } rows[] = {
        {9600, {1042, 2084, 3125}, 4167, 6250},
        {921600, {11, 22, 33}, 44, 66},
    };
    for (const auto& row : rows) {
        Recorder device;
        PacedLine line(device);
        line.hear(0, chars("xya"), row.rate);
        EXPECT_EQ(line.speak(row.firstBack - 1), Bytes{});
        EXPECT_EQ(device.heardAt, row.heardAt) << row.rate;
        EXPECT_EQ(line.speak(row.firstBack + 1), chars("q")) << row.rate;
        EXPECT_EQ(line.speak(row.allBack - 2), chars("r")) << row.rate;
        EXPECT_EQ(line.speak(row.allBack + 1), chars("s")) << row.rate;
        EXPECT_EQ(line.nextAt(), std::nullopt);
    }
}

TEST(PacedLine, NamesTheMomentOfTheNextNews) {
    Recorder device;
    PacedLine line(device);
    line.hear(1000, chars("za"), 115200);
    EXPECT_EQ(line.nextAt(), 1174) << "two bytes on their way are one event";
    EXPECT_EQ(line.speak(1174), Bytes{});
    EXPECT_EQ(line.nextAt(), 1435) << "and so are three on their way back";
    EXPECT_EQ(line.speak(1435).size(), 3U);

    line.hear(2000, Bytes(500, 'z'), 19200);
    EXPECT_EQ(line.nextAt(), 3521) << "a long text is handed over every millisecond";
}

TEST(PacedLine, DropsWhatAnUnpluggedDeviceSaid) {
    Recorder device;
    PacedLine line(device);
    line.hear(0, chars("a"), 19200);
    EXPECT_EQ(line.speak(1100), chars("q"));
    device.plugged = false;
    EXPECT_EQ(line.speak(9000), Bytes{});
    device.plugged = true;
    EXPECT_EQ(line.speak(9000), Bytes{});
}

TEST(Transcript, TotalsTheWire) {
    Recorder device;
    PacedLine line(device);
    Talk talk{line, 19200};
    talk.timeline("0d", 100);
    talk.rate = 115200;
    EXPECT_EQ(talk.timeline("025861", 100), "0:717273");
    const auto& transcript = line.transcript();
    EXPECT_EQ(transcript.bytes(Direction::toDevice) * 10 + transcript.bytes(Direction::toHost), 43U);
    EXPECT_EQ(transcript.wireTime(), 521 + 521);
    EXPECT_EQ(transcript.wireTime(100000), 521);
}

TEST(Transcript, JoinsWhatCameWithoutABreak) {
    Transcript transcript;
    std::vector<std::string> taken;
    transcript.handOver([&](const Passage& passage) { taken.push_back(textOf(passage)); });
    transcript.add(1000, Direction::toHost, 9600, chars("a"));
    transcript.add(3000, Direction::toHost, 9600, chars("b\\"));
    transcript.add(3000, Direction::toDevice, 9600, chars("c"));
    transcript.add(5001, Direction::toDevice, 9600, chars("d"));
    EXPECT_EQ(taken, (std::vector<std::string>{"    0.001000 < 9600 ab\\x5C", "    0.003000 > 9600 c"}));
    transcript.add(5001, Direction::toDevice, 1200, chars("e"));
    transcript.finish();
    transcript.finish();
    EXPECT_EQ(taken.size(), 4U);
}

}  // namespace
}  // namespace corvane::models
