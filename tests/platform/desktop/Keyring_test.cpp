#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>
#include <gtest/gtest.h>

#include "platform/linux/keyring/LibsecretStore.h"
#include "support/FakeSystem.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

constexpr char kService[] = "org.freedesktop.secrets";

/// A keyring of the desktop's own on this test's bus, in a folder of its own.
class Keyring {
public:
    Keyring() {
        QEventLoop started;
        const QDBusServiceWatcher watcher(kService, QDBusConnection::sessionBus(),
                                          QDBusServiceWatcher::WatchForRegistration);
        QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &started, &QEventLoop::quit);
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", QString::fromStdString(folder_.path()));
        environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(folder_.path()));
        daemon_.setProcessEnvironment(environment);
        daemon_.setStandardErrorFile(QProcess::nullDevice());
        daemon_.start("gnome-keyring-daemon", {"--foreground", "--unlock", "--components=secrets"});
        daemon_.write("opens it");
        daemon_.closeWriteChannel();
        EXPECT_TRUE(daemon_.waitForStarted() && daemon_.waitForBytesWritten());
        QTimer::singleShot(20000, &started, &QEventLoop::quit);
        started.exec();
        EXPECT_TRUE(isThere()) << "run it under dbus-run-session";
    }
    ~Keyring() {
        daemon_.terminate();
        if (!daemon_.waitForFinished()) daemon_.kill();
        daemon_.waitForFinished();
    }

    static void lock() {
        auto message = QDBusMessage::createMethodCall(kService, "/org/freedesktop/secrets",
                                                      "org.freedesktop.Secret.Service", "Lock");
        message << QVariant::fromValue(
            QList<QDBusObjectPath>{QDBusObjectPath("/org/freedesktop/secrets/collection/login")});
        EXPECT_EQ(QDBusConnection::sessionBus().call(message).type(), QDBusMessage::ReplyMessage);
    }

private:
    static bool isThere() { return QDBusConnection::sessionBus().interface()->isServiceRegistered(kService); }

    fakes::ScratchFolder folder_;
    QProcess daemon_;
};

/// Takes every question and answers none.
struct Silent : QDBusVirtualObject {
    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        message.setDelayedReply(true);
        return true;
    }
};

void keepsOneSecretForEachFile(SecretStore& store) {
    EXPECT_EQ(store.load("/a"), "");
    EXPECT_TRUE(store.save("/a", "p@ss wörd/%"));
    EXPECT_TRUE(store.save("/b", "other"));
    EXPECT_EQ(store.load("/a"), "p@ss wörd/%");
    EXPECT_TRUE(store.save("/a", "newer"));
    EXPECT_EQ(store.load("/a"), "newer");
    EXPECT_EQ(store.load("/b"), "other");
    EXPECT_TRUE(store.save("/a", ""));
    EXPECT_TRUE(store.save("/a", "")) << "nothing to remove";
    EXPECT_EQ(store.load("/a"), "");
}

void givesAndTakesNothing(SecretStore& store) {
    EXPECT_EQ(store.load("/b"), "");
    EXPECT_FALSE(store.save("/b", "x"));
    EXPECT_FALSE(store.save("/b", ""));
}

TEST(SecretStore, KeepsOneSecretForEachFileAndNothingWhileItIsLocked) {
    fakes::FakeSecretStore fake(false);
    keepsOneSecretForEachFile(fake);
    fake.isLocked = true;
    givesAndTakesNothing(fake);

    const Keyring keyring;
    LibsecretStore real;
    keepsOneSecretForEachFile(real);
    EXPECT_EQ(LibsecretStore().load("/b"), "other");
    Keyring::lock();
    givesAndTakesNothing(real);
}

TEST(LibsecretStore, IsSilentlyAbsentWithoutABusAndGivesUpOnASilentKeyring) {
    LibsecretStore store;
    const auto bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("XDG_RUNTIME_DIR");
    givesAndTakesNothing(store);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
    auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "silent");
    Silent silent;
    EXPECT_TRUE(connection.registerVirtualObject("/org/freedesktop/secrets", &silent));
    EXPECT_TRUE(connection.registerService(kService));
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(store.load("/b"), "");
    EXPECT_GE(time.elapsed(), LibsecretStore::kPatience);
    EXPECT_LT(time.elapsed(), 2 * LibsecretStore::kPatience);
    connection.unregisterService(kService);
    QDBusConnection::disconnectFromBus("silent");
}

}  // namespace corvane::tests
