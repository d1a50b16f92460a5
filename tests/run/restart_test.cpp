#include "RunBench.h"

namespace corvane::tests {

/// What comes of the restart into the new application, and what is said of it.
struct Restart : RunTest {
    using Happening = std::function<void()>;

    Restart() { asksAfterwards(true); }

    /// Runs, and lets something happen in the moment before the device is told to restart. All that while the update
    /// is announced once.
    Outcome startAnd(const Happening& happens, bool force = false) {
        loadImage();
        int finishes = 0;
        when("Update Finish\r\n", [&] {
            restartAt = runtime.ms();
            requestsBefore = device().log().requests.size();
            ++finishes;
            happens();
        });
        const auto outcome = start(force);
        EXPECT_EQ(finishes, 1);
        return outcome;
    }

    /// The restart command's letter, behind its STX, does not arrive as it was sent.
    Happening harmed(const std::string& fault) {
        return [this, fault] { device().faults().add(fault + "@" + std::to_string(device().log().bytesHeard + 2)); };
    }

    const models::DeviceOptions kUpdatable{.nextVersion = "TARN-R200 V5.2R1"};
    RunJournal& journal = updater.journal();
    std::int64_t restartAt = 0;
    std::size_t requestsBefore = 0;
};

TEST_F(Restart, IsProven) {
    const Happening nothing = [] {}, unplugged = [this] { device().unplug(); },
                    deaf = [this] { device().faults().add("deaf@01"); },
                    halfHeard =
                        [this] {  // the question's first byte, behind the restart's three
                            device().faults().add("drop-byte@" + std::to_string(device().log().bytesHeard + 4));
                        },
                    slow =
                        [&] {
                            deaf();
                            runtime.at(runtime.ms() + 3000, [this] { device().faults() = {}; });
                        },
                    tooMany = [this] {
                        device().faults().add("noise@" + std::to_string(device().log().replies + 1) + "=06");
                    };
    const struct {
        const char* name;
        Happening happens;
        DeviceState device;
        int restarts;
        std::int64_t atLeast, atMost;  // ms from the restart on
        const char* cause = "";
    } cases[] = {
        {"obeyed", nothing, DeviceState::application, 1, 300, 1000},
        {"a question heard in part", halfHeard, DeviceState::application, 1, 600, 1000},
        {"refused", harmed("corrupt-byte"), DeviceState::application, 1, 600, 2500},
        {"lost", harmed("drop-byte"), DeviceState::application, 1, 600, 2500},
        {"a slow start", slow, DeviceState::application, 1, 3000, 4500},
        {"an answer too many", tooMany, DeviceState::application, 2, 2000, 4000},  // by another try
        {"unheard", deaf, DeviceState::unheard, 1, 8000, 10000},
        {"unplugged", unplugged, DeviceState::unheard, 0, 8000, 10000, "COM1 was lost"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        plugOnly({}, kUpdatable);
        EXPECT_EQ(journal.forget(journal.left()), "");
        const auto outcome = startAnd(one.happens);
        const bool isProven = one.device == DeviceState::application;
        EXPECT_EQ(outcome.end, isProven ? RunEnd::updated : RunEnd::notHeardOf);
        EXPECT_EQ(outcome.device, one.device);
        EXPECT_EQ(outcome.cause, one.cause);
        EXPECT_EQ(device().log().restarts, one.restarts);
        EXPECT_GE(runtime.ms() - restartAt, one.atLeast);
        EXPECT_LE(runtime.ms() - restartAt, one.atMost);
        EXPECT_EQ(journal.left().empty(), isProven);
        EXPECT_EQ(memoryFault(), "");
    }
}

TEST_F(Restart, IsTriedThreeTimes) {
    plugOnly({}, {.kind = models::Kind::boot});
    const auto outcome = startAnd([] {}, true);
    EXPECT_EQ(outcome.end, RunEnd::notRestarted);
    EXPECT_EQ(outcome.device, DeviceState::bootLoaderComplete);
    EXPECT_EQ(device().log().restarts, 3);
    EXPECT_FALSE(journal.left().empty());
}

TEST_F(Restart, LeadsToTheVersionThatWasInstalled) {
    const std::tuple<Promise, bool, RunEnd, std::size_t> cases[] = {
        {Promise::version, false, RunEnd::updated, 1},
        {Promise::version, true, RunEnd::otherVersion, 1},
        {Promise::running, true, RunEnd::notConfirmed, 1},
        {Promise::programmed, true, RunEnd::updated, 0},
    };
    for (const auto& row : cases) {
        plugOnly({}, std::get<1>(row) ? models::DeviceOptions() : kUpdatable);
        face.onSelection = [&] { updater.choices.promise = std::get<Promise>(row); };
        const auto outcome = startAnd([] {});
        EXPECT_EQ(outcome.end, std::get<RunEnd>(row));
        EXPECT_EQ(outcome.device, DeviceState::application);
        EXPECT_EQ(device().log().requests.size() - requestsBefore, std::get<3>(row));
    }
}

TEST_F(Restart, OfTheBootLoaderMeanwhileIsFollowedByAnErase) {
    plugOnly({}, kUpdatable);
    loadImage(
        "[INFO]\nPGM=TARN\nVER=V5.2R1\nBUD=2024/01/31\n:0400100005060708D2\n:020000040001F9\n"
        ":04002000090A0B0CB2\n:040030000D0E0F1092\n:00000001FF\n");
    when("Programming...", [this] {
        if (device().log().erases > 1) return;
        device().faults().add("boot-deafx1=300");
        runtime.at(runtime.ms() + 25, [this] {
            device().unplug();
            device().plugIn(runtime.micros());
        });
    });
    EXPECT_EQ(start().end, RunEnd::updated);
    EXPECT_EQ(device().log().erases, 2);
}

}  // namespace corvane::tests
