#include "platform/linux/desktop/LogindInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace corvane {
namespace {

constexpr char kConnection[] = "corvane-inhibitor";

}  // namespace

/// Over a connection of its own each time: one that was kept would not outlive a restart of the bus.
void LogindInhibitor::hold(const std::string& reason) {
    if (lock_) return;
    const auto bus = bus_.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, kConnection)
                                    : QDBusConnection::connectToBus(bus_, kConnection);
    if (!bus.isConnected()) return QDBusConnection::disconnectFromBus(kConnection);
    auto request = QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                                  "org.freedesktop.login1.Manager", "Inhibit");
    request << QString("shutdown:sleep:idle:handle-lid-switch") << QString("Corvane") << QString::fromStdString(reason)
            << QString("block");
    lock_ = bus.asyncCall(request);
}

void LogindInhibitor::release() {
    if (!lock_) return;
    lock_.reset();
    QDBusConnection::disconnectFromBus(kConnection);
}

}  // namespace corvane
