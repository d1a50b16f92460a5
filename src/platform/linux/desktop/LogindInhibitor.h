#pragma once

#include <QDBusPendingCall>
#include <QString>
#include <optional>
#include <utility>

#include "platform/SleepInhibitor.h"

namespace corvane {

/// logind's inhibitor, asked for over the system bus, for one window: neither sleep nor shutdown, and a lid that is
/// closed does nothing. Nothing is waited for but the bus itself, and nobody is told when bus or logind are missing or
/// refuse: then the computer is as it always was.
class LogindInhibitor : public SleepInhibitor {
public:
    /// Over the system bus, or over the one at another address.
    explicit LogindInhibitor(QString bus = {}) : bus_(std::move(bus)) {}
    ~LogindInhibitor() override { LogindInhibitor::release(); }

    void hold(const std::string& reason) override;
    void release() override;

private:
    QString bus_;
    std::optional<QDBusPendingCall> lock_;  // logind's answer, which owns the descriptor that keeps the computer awake
};

}  // namespace corvane
