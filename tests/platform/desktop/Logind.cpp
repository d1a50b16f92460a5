#include "Logind.h"

#include <QCoreApplication>
#include <QDBusUnixFileDescriptor>
#include <QStandardPaths>
#include <QTimer>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace corvane {
namespace {

constexpr char kConnection[] = "stand-in";
constexpr int kPatience = 20000;  // ms

const std::string kConfiguration =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
    "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig><listen>unix:path=@/bus</listen><auth>EXTERNAL</auth><policy context=\"default\">"
    "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>\n";

QString daemonPath() { return QStandardPaths::findExecutable("dbus-daemon"); }

/// Handles events until the condition holds.
template <typename Condition>
bool comes(Condition condition) {
    bool isLate = false;
    QTimer patience;
    QObject::connect(&patience, &QTimer::timeout, [&isLate] { isLate = true; });
    patience.start(kPatience);
    while (!condition() && !isLate) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return !isLate;
}

}  // namespace

bool PrivateBus::isPossible() { return !daemonPath().isEmpty(); }

PrivateBus::PrivateBus() {
    auto configuration = kConfiguration;
    configuration.replace(configuration.find('@'), 1, folder_.path());
    const auto file = QString::fromStdString(folder_.file("bus.conf", configuration));
    daemon_.start(daemonPath(), {"--config-file=" + file, "--nofork", "--print-address"});
    if (daemon_.waitForReadyRead(kPatience)) address_ = QString::fromUtf8(daemon_.readLine().trimmed());
}

PrivateBus::~PrivateBus() {
    daemon_.terminate();
    daemon_.waitForFinished();
}

Logind::Logind(const QString& bus) {
    auto connection = QDBusConnection::connectToBus(bus, kConnection);
    connection.registerVirtualObject("/org/freedesktop/login1", this);
    connection.registerService("org.freedesktop.login1");
}

Logind::~Logind() {
    for (const int end : ends_) ::close(end);
    QDBusConnection::disconnectFromBus(kConnection);
}

bool Logind::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
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

/// How many of them somebody else has open.
int Logind::locks() {
    for (auto end = ends_.begin(); end != ends_.end();) {
        pollfd state{*end, POLLIN, 0};
        const bool isClosed = ::poll(&state, 1, 0) == 1 && state.revents & POLLHUP;
        if (isClosed) ::close(*end);
        end = isClosed ? ends_.erase(end) : std::next(end);
    }
    return static_cast<int>(ends_.size());
}

bool Logind::comesToRequests(int count) {
    return comes([=, this] { return asked.size() >= count; });
}

/// The descriptors themselves wake nobody here, so a timer does.
bool Logind::comesToLocks(int count) {
    QTimer again;
    again.start(1);
    return comes([=, this] { return locks() == count; });
}

}  // namespace corvane
