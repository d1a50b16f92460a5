#include "RunBench.h"

namespace corvane {
namespace {

/// Many devices of one kind at COM1: each is taken off a while after it was updated, and the next one connected.
class Series : public RunTest {
protected:
    Series() {
        asksAfterwards(true);
        loadImage();
        presenter.chkSeries_Click(true);
        face.onBox = [this](Question, const std::string& text) { return asked.push_back(text), true; };
        face.onPhase = [this](RunPhase phase) {
            if (phase == RunPhase::removal) runtime.at(runtime.ms() + 5000, [this] { swap(); });
        };
    }

    void put() {
        models::DeviceOptions options;
        options.nextVersion = "TARN-R200 V5.2R1";
        if (static_cast<int>(devices.size()) + 1 == failing) options.faults = {"nakx*"};
        if (change) change(options);
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        serial.control.plug(1, *devices.back());
        serial.map.entries.clear();
        serial.list(1);
    }

    /// The cable goes to the next device at once, or the adapter leaves with the device and another one comes.
    void swap() {
        if (static_cast<int>(devices.size()) == last) return presenter.cmdCancel_Click();
        if (!adapterLeaves) return put();
        serial.map.entries.clear();
        devices.back()->unplug();
        runtime.at(runtime.ms() + 7000, [this] { put(); });
    }

    /// As the window does: how each device ended, a letter for each.
    std::string updateAll(bool force = false) {
        put();
        std::string ends;
        Outcome outcome;
        do {
            outcome = start(force);
            ends += presenter.conclude(outcome).kind == VerdictKind::updated ? 'u' : 'f';
        } while (presenter.waitForNext(outcome));
        return ends;
    }

    std::string recorded() {
        std::string verdicts;
        for (const auto& line : updater.jobs().last(20)) verdicts.insert(0, 1, jobFields(line).at(7).front());
        return verdicts;
    }

    int last = 10, failing = 4;
    bool adapterLeaves = false;
    std::function<void(models::DeviceOptions&)> change;
    std::vector<std::string> asked;
};

TEST_F(Series, UpdatesTenDevicesButForTheOneThatFailsAndStopsThere) {
    EXPECT_EQ(updateAll(), "uuuf");
    EXPECT_FALSE(presenter.isBusy());
    adapterLeaves = true;
    EXPECT_EQ(updateAll(), "uuuuuu") << "until Cancel";
    EXPECT_EQ(presenter.situation().card().headline, "A device was left in its boot loader, without working firmware.");
    EXPECT_EQ(recorded(), "uuuwuuuuuu");
    EXPECT_EQ(asked.size(), 2u) << "one question a start";
    for (const auto& device : devices) EXPECT_EQ(device->isInBoot(), device == devices[3]);
}

TEST_F(Series, LooksFirstWhereTheLastOneWasFound) {
    last = 2, failing = 0;
    change = [](auto& options) { options.baud = 38400; };
    std::string tried;
    face.onText = [&tried](const std::string& text) {
        if (text.starts_with("   Scan by ")) tried += text.substr(11);
    };
    EXPECT_EQ(updateAll(), "uu");
    EXPECT_EQ(tried, "19200,N,8,1115200,N,8,138400,N,8,138400,N,8,1");
}

TEST_F(Series, AsksWhatIsNewAboutADeviceAndNothingElse) {
    last = 4, failing = 0;
    face.answers = {"sesame"};
    change = [this](auto& options) {
        options.password = "sesame";
        if (devices.size() == 1) options.version = "TARN-R200 V6.0R1";
    };
    EXPECT_EQ(updateAll(), "uuuu");
    EXPECT_EQ(face.questions.size(), 1u);
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_TRUE(asked[1].ends_with("The image is OLDER than what the device runs: V5.2R1 after V6.0R1.")) << asked[1];
}

TEST_F(Series, RescuesManyAndTakesNoneTwiceThatIsRestarting) {
    last = 3, failing = 0;
    for (const bool asks : {true, false}) {
        asksAfterwards(asks);
        for (const bool boots : {true, false}) {
            change = [boots](auto& options) { options.startsInBoot = boots; };
            last = static_cast<int>(devices.size()) + 3;
            EXPECT_EQ(updateAll(boots), "uuu") << asks << boots;
        }
    }
    for (const auto& device : devices) EXPECT_EQ(device->log().erases, 1);
}

}  // namespace
}  // namespace corvane
