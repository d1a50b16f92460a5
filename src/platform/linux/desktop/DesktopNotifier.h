#pragma once

#include <QString>
#include <utility>

namespace corvane {

/// Notifications of the desktop (org.freedesktop.Notifications). Nothing is waited for but the bus itself, and where
/// there is no bus, or nobody on it who shows them, nothing happens.
class DesktopNotifier {
public:
    /// Over the session's bus, or over the one at another address.
    explicit DesktopNotifier(QString bus = {}) : bus_(std::move(bus)) {}

    /// Both as plain text; one that asks for help stays until it is dismissed.
    void tell(const QString& summary, const QString& text, bool asksForHelp) const;

private:
    QString bus_;
};

}  // namespace corvane
