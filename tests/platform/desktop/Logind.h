#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <list>
#include <memory>

#include "support/ScratchFolder.h"

namespace corvane {

/// A D-Bus daemon of the test's own.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Whether this system has the daemon at all.
    static bool isPossible();
    const QString& address() const { return address_; }

private:
    fakes::ScratchFolder folder_;
    QProcess daemon_;
    QString address_;
};

/// Stands in for logind on the bus: hands out descriptors and sees when they are closed.
class Logind : public QDBusVirtualObject {
public:
    explicit Logind(const QString& bus);
    ~Logind() override;
    Logind(const Logind&) = delete;
    Logind& operator=(const Logind&) = delete;

    bool refuses = false;
    QStringList asked;  ///< the arguments of each request, joined by "|"

    /// Handles what comes until so many locks are held, or so many requests were made. False when that takes too long.
    bool comesToLocks(int count);
    bool comesToRequests(int count);

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    int locks();

    std::list<int> ends_;  // this side of each lock that is held
};

}  // namespace corvane
