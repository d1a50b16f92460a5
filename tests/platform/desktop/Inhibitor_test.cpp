#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QTimer>
#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/desktop/DesktopNotifier.h"
#include "platform/linux/desktop/LogindInhibitor.h"

namespace corvane::tests {

constexpr char kConnection[] = "stand-in";
constexpr int kPatience = 20000;  // turns of 1 ms

/// Stands in for logind and for whoever shows notifications on the bus: hands out descriptors and sees when they are
/// closed.
struct Logind : QDBusVirtualObject {
    Logind() {
        auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnection);
        connection.registerVirtualObject("/org/freedesktop/login1", this);
        connection.registerVirtualObject("/org/freedesktop/Notifications", this);
        EXPECT_TRUE(connection.registerService("org.freedesktop.Notifications"));
        EXPECT_TRUE(connection.registerService("org.freedesktop.login1")) << "run it under dbus-run-session";
    }
    ~Logind() override { QDBusConnection::disconnectFromBus(kConnection); }

    bool refuses = false;
    QStringList asked;  ///< the arguments of each request, joined by "|"

    /// Handles what comes until so many requests were made and so many locks are held; False when that takes too long.
    bool comesTo(int requests, int locks) {
        QTimer again;  // the descriptors themselves wake nobody here
        again.start(1);
        for (int round = 0; round < kPatience && (asked.size() < requests || held() != locks); ++round)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return asked.size() >= requests && held() == locks;
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == "Notify") {
            const auto told = message.arguments();
            asked.append(told.value(3).toString() + "|" + told.value(4).toString() + "|" + told.value(7).toString());
            return connection.send(message.createReply(1U));
        }
        if (message.interface() != "org.freedesktop.login1.Manager" || message.member() != "Inhibit") return false;
        asked.append(QVariant(message.arguments()).toStringList().join('|'));
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
        return static_cast<int>(std::count_if(ends_.begin(), ends_.end(), [](int end) {
            pollfd state{end, POLLIN, 0};
            return ::poll(&state, 1, 0) == 0 || !(state.revents & POLLHUP);
        }));
    }

    std::vector<int> ends_;  // this side of each lock that was given
};

const QString kBus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");

TEST(LogindInhibitor, HoldsUntilItIsReleasedAndIsSilentlyAbsentWithoutABusALogindOrItsConsent) {
    LogindInhibitor("unix:path=/nowhere/bus").hold("no bus");
    auto inhibitor = std::make_unique<LogindInhibitor>(kBus);
    inhibitor->hold("no logind");
    inhibitor->release();
    Logind logind;
    logind.refuses = true;
    inhibitor->hold("refused");
    EXPECT_TRUE(logind.comesTo(1, 0));
    inhibitor->release();
    logind.refuses = false;
    for (int times = 2; times <= 3; ++times) {
        inhibitor->hold("A device is being programmed");
        EXPECT_TRUE(logind.comesTo(times, 1));
        inhibitor->hold("once more");
        inhibitor->release();
        EXPECT_TRUE(logind.comesTo(times, 0));
    }
    EXPECT_EQ(logind.asked.back().toStdString(),
              "shutdown:sleep:idle:handle-lid-switch|Corvane|A device is being programmed|block");
    inhibitor->hold("early");  // answered when this thread handles events
    inhibitor->release();
    inhibitor->hold("late");
    EXPECT_TRUE(logind.comesTo(4, 1));
    inhibitor.reset();
    EXPECT_TRUE(logind.comesTo(4, 0)) << "released with the program";
}

TEST(DesktopNotifier, TellsWhoeverShowsNotificationsAndNobodyWithoutABus) {
    DesktopNotifier("unix:path=/nowhere/bus").tell("no", "bus", true);
    Logind desktop;
    DesktopNotifier(kBus).tell("The device is updated.", "a < b", false);
    DesktopNotifier(kBus).tell("A device waits.", "", true);
    EXPECT_TRUE(desktop.comesTo(2, 0));
    EXPECT_EQ(desktop.asked, (QStringList{"The device is updated.|a &lt; b|-1", "A device waits.||0"}));
}

}  // namespace corvane::tests

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
