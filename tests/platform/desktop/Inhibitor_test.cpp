#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QTimer>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/desktop/LogindInhibitor.h"
#include "support/FakeSystem.h"

namespace corvane {
namespace {

constexpr char kConnection[] = "stand-in";
constexpr int kPatience = 20000;  // turns of 1 ms

/// Stands in for logind on the bus: hands out descriptors and sees when they are closed.
class Logind : public QDBusVirtualObject {
public:
    Logind() {
        auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnection);
        connection.registerVirtualObject("/org/freedesktop/login1", this);
        EXPECT_TRUE(connection.registerService("org.freedesktop.login1")) << "run it under dbus-run-session";
    }
    ~Logind() override { QDBusConnection::disconnectFromBus(kConnection); }
    Logind(const Logind&) = delete;
    Logind& operator=(const Logind&) = delete;

    bool refuses = false;
    QStringList asked;  ///< the arguments of each request, joined by "|"

    /// Handles what comes until so many requests were made and so many locks are held; False when that takes too long.
    bool comesTo(int requests, int locks) {
        QTimer again;  // the descriptors themselves wake nobody here
        again.start(1);
        for (int round = 0; round < kPatience; ++round) {
            if (asked.size() >= requests && held() == locks) return true;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return false;
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != "org.freedesktop.login1.Manager" || message.member() != "Inhibit") return false;
        QStringList words;
        for (const auto& argument : message.arguments()) words.append(argument.toString());
        asked.append(words.join('|'));
        if (refuses) return connection.send(message.createErrorReply(QDBusError::AccessDenied, "no"));
        int ends[2] = {};
        if (::pipe2(ends, O_CLOEXEC) < 0) return false;
        ends_.push_back(ends[0]);
        const QDBusUnixFileDescriptor lock(ends[1]);  // a copy of its own
        ::close(ends[1]);
        return connection.send(message.createReply(QVariant::fromValue(lock)));
    }

private:
    /// How many of them somebody else has open.
    int held() {
        std::erase_if(ends_, [](int end) {
            pollfd state{end, POLLIN, 0};
            const bool isClosed = ::poll(&state, 1, 0) == 1 && state.revents & POLLHUP;
            return isClosed && ::close(end) == 0;
        });
        return static_cast<int>(ends_.size());
    }

    std::vector<int> ends_;  // this side of each lock that is held
};

const QString kBus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");

/// However often it is asked to.
template <typename ComesTo>
void holdsUntilItIsReleased(SleepInhibitor& inhibitor, ComesTo comesTo) {
    inhibitor.release();
    EXPECT_TRUE(comesTo(false));
    for (int i = 0; i < 2; ++i) {
        inhibitor.hold("A device is being programmed");
        EXPECT_TRUE(comesTo(true));
        inhibitor.hold("once more");
        inhibitor.release();
        EXPECT_TRUE(comesTo(false));
        inhibitor.release();
    }
}

TEST(SleepInhibitorContract, HoldsForBoth) {
    fakes::FakeInhibitor fake;
    holdsUntilItIsReleased(fake, [&](bool isHeld) { return fake.isHeld == isHeld; });
    Logind logind;
    LogindInhibitor real(kBus);
    holdsUntilItIsReleased(real, [&](bool isHeld) { return logind.comesTo(0, isHeld ? 1 : 0); });
    EXPECT_EQ(logind.asked[0].toStdString(),
              "shutdown:sleep:idle:handle-lid-switch|Corvane|A device is being programmed|block");
    EXPECT_EQ(logind.asked.size(), 2);
}

TEST(LogindInhibitor, IsReleasedWithTheProgramAndHoldsNothingByALateAnswer) {
    Logind logind;
    {
        LogindInhibitor inhibitor(kBus);
        inhibitor.hold("early");  // answered when this thread handles events
        inhibitor.release();
        inhibitor.hold("late");
        EXPECT_TRUE(logind.comesTo(1, 1));
    }
    EXPECT_TRUE(logind.comesTo(1, 0));
}

TEST(LogindInhibitor, IsSilentlyAbsentWithoutABusALogindOrItsConsent) {
    LogindInhibitor lost("unix:path=/nowhere/bus");
    lost.hold("no bus");
    lost.release();

    LogindInhibitor inhibitor(kBus);
    inhibitor.hold("no logind");
    inhibitor.release();

    Logind logind;
    logind.refuses = true;
    inhibitor.hold("refused");
    EXPECT_TRUE(logind.comesTo(1, 0));
    inhibitor.release();
    logind.refuses = false;
    inhibitor.hold("agreed to");
    EXPECT_TRUE(logind.comesTo(2, 1));
    inhibitor.release();
}

}  // namespace
}  // namespace corvane

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
