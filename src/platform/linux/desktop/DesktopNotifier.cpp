#include "platform/linux/desktop/DesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QVariantMap>

namespace corvane {
namespace {

constexpr char kConnection[] = "corvane-notifier";

/// Without an address the library would start a bus of its own, for nobody.
QString sessionBus() {
    auto address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty()) return address;
    const auto socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus";
    return QFile::exists(socket) ? "unix:path=" + socket : QString();
}

}  // namespace

void DesktopNotifier::tell(const QString& summary, const QString& text, bool asksForHelp) const {
    const auto address = bus_.isEmpty() ? sessionBus() : bus_;
    if (address.isEmpty()) return;
    const auto bus = QDBusConnection::connectToBus(address, kConnection);
    if (bus.isConnected()) {
        constexpr uchar kNormal = 1, kCritical = 2;
        constexpr int kAsUsual = -1, kForEver = 0;
        auto request = QDBusMessage::createMethodCall("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                                      "org.freedesktop.Notifications", "Notify");
        request << QString("Corvane") << 0U << QString("corvane") << summary << text.toHtmlEscaped() << QStringList()
                << QVariantMap{{"urgency", QVariant::fromValue(asksForHelp ? kCritical : kNormal)},
                               {"desktop-entry", "corvane"}}
                << (asksForHelp ? kForEver : kAsUsual);
        bus.send(request);
    }
    QDBusConnection::disconnectFromBus(kConnection);
}

}  // namespace corvane
