#include <QCoreApplication>
#include <gtest/gtest.h>

#include "Logind.h"
#include "platform/linux/desktop/LogindInhibitor.h"
#include "support/FakeInhibitor.h"

namespace corvane {
namespace {

/// An inhibitor, and whether the computer is kept awake.
class Rig {
public:
    virtual ~Rig() = default;
    virtual SleepInhibitor& inhibitor() = 0;
    virtual bool comesTo(bool isHeld) = 0;
};

class FakeRig : public Rig {
public:
    SleepInhibitor& inhibitor() override { return inhibitor_; }
    bool comesTo(bool isHeld) override { return inhibitor_.isHeld == isHeld; }

private:
    fakes::FakeInhibitor inhibitor_;
};

class LogindRig : public Rig {
public:
    SleepInhibitor& inhibitor() override { return inhibitor_; }
    bool comesTo(bool isHeld) override { return logind_.comesToLocks(isHeld ? 1 : 0); }

private:
    PrivateBus bus_;
    Logind logind_{bus_.address()};
    LogindInhibitor inhibitor_{bus_.address()};
};

class SleepInhibitorContract : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam() && !PrivateBus::isPossible()) GTEST_SKIP() << "this system has no dbus-daemon";
        if (GetParam())
            rig = std::make_unique<LogindRig>();
        else
            rig = std::make_unique<FakeRig>();
    }
    std::unique_ptr<Rig> rig;
};

TEST_P(SleepInhibitorContract, HoldsUntilItIsReleasedHoweverOftenItWasAskedTo) {
    auto& inhibitor = rig->inhibitor();
    inhibitor.release();
    EXPECT_TRUE(rig->comesTo(false));
    for (int i = 0; i < 2; ++i) {
        inhibitor.hold("A device is being programmed");
        EXPECT_TRUE(rig->comesTo(true));
        inhibitor.hold("once more");
        inhibitor.release();
        EXPECT_TRUE(rig->comesTo(false));
        inhibitor.release();
    }
}

INSTANTIATE_TEST_SUITE_P(FakeAndReal, SleepInhibitorContract, ::testing::Bool());

class LogindInhibitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isPossible()) GTEST_SKIP() << "this system has no dbus-daemon";
    }
};

TEST_F(LogindInhibitorTest, AsksForWhatAProgrammedDeviceNeeds) {
    const PrivateBus bus;
    Logind logind(bus.address());
    LogindInhibitor inhibitor(bus.address());
    inhibitor.hold("A device is being programmed");
    EXPECT_TRUE(logind.comesToLocks(1));
    EXPECT_EQ(logind.asked.join('\n').toStdString(),
              "shutdown:sleep:idle:handle-lid-switch|Corvane|A device is being programmed|block");
}

TEST_F(LogindInhibitorTest, IsReleasedWithTheProgram) {
    const PrivateBus bus;
    Logind logind(bus.address());
    {
        LogindInhibitor inhibitor(bus.address());
        inhibitor.hold("x");
        EXPECT_TRUE(logind.comesToLocks(1));
    }
    EXPECT_TRUE(logind.comesToLocks(0));
}

TEST_F(LogindInhibitorTest, AnAnswerThatComesTooLateHoldsNothing) {
    const PrivateBus bus;
    Logind logind(bus.address());
    LogindInhibitor inhibitor(bus.address());
    inhibitor.hold("early");  // answered when this thread handles events
    inhibitor.release();
    inhibitor.hold("late");
    EXPECT_TRUE(logind.comesToRequests(1));
    EXPECT_TRUE(logind.comesToLocks(1));
    inhibitor.release();
    EXPECT_TRUE(logind.comesToLocks(0));
}

TEST_F(LogindInhibitorTest, IsSilentlyAbsentWithoutABusALogindOrItsConsent) {
    LogindInhibitor lost("unix:path=/nowhere/bus");
    lost.hold("no bus");
    lost.release();

    const PrivateBus bus;
    LogindInhibitor inhibitor(bus.address());
    inhibitor.hold("no logind");
    inhibitor.release();

    Logind logind(bus.address());
    logind.refuses = true;
    inhibitor.hold("refused");
    EXPECT_TRUE(logind.comesToRequests(1));
    inhibitor.release();
    logind.refuses = false;
    inhibitor.hold("agreed to");
    EXPECT_TRUE(logind.comesToLocks(1));
}

}  // namespace
}  // namespace corvane

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
