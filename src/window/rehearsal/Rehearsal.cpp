#include "window/rehearsal/Rehearsal.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <stdexcept>

#include "platform/linux/Signals.h"

namespace corvane {
namespace {

constexpr int kPatience = 20000;  // ms that a process may take to start, or to end
constexpr char kNewestImage[] = "/firmware/images/r200_v52r1.hex";
constexpr char kAccount[] = "demo", kPassword[] = "practice";
constexpr char kDevice[] = "kind=TarnPlus,version=TARN-R200 V5.1R23,next-version=TARN-R200 V5.2R1";

[[noreturn]] void fail(const QString& why) { throw std::runtime_error(why.toStdString()); }

/// Beside the programs of a build, or where they were installed.
QString exampleSite() {
    const auto programs = QCoreApplication::applicationDirPath();
    for (const auto* place : {"/example-site", "/" CORVANE_EXAMPLE_SITE_RELATIVE}) {
        auto folder = QDir::cleanPath(programs + place);
        if (QFileInfo::exists(folder + kNewestImage)) return folder;
    }
    fail(QObject::tr("the images of the example site are not beside the program"));
}

}  // namespace

const std::vector<RehearsalKind>& rehearsalKinds() {
    static const QString device = kDevice;
    static const std::vector<RehearsalKind> kinds = {
        {"healthy", QObject::tr("An &update of a healthy device"),
         QObject::tr("A device on a serial port takes the new firmware."), device + ",baud=19200,boot-baud=57600"},
        {"boot-loader", QObject::tr("The &rescue of a device in its boot loader"),
         QObject::tr("An earlier update was cut off; the device has no working firmware."), device + ",in-boot=yes"},
        {"bad-cable", QObject::tr("A &bad cable"),
         QObject::tr("The first update fails; with what mends it, the second one does not."),
         device + ",baud=19200,boot-baud=57600,fault=nak@20x9"},
        {"reader", QObject::tr("A device behind a USB r&eader"),
         QObject::tr("The update goes through a HID reader instead of a serial port."),
         device + ",hid=yes,baud=19200,boot-baud=57600"},
    };
    return kinds;
}

CompanionProcess::CompanionProcess() { setChildProcessModifier(companionSetup()); }

CompanionProcess::~CompanionProcess() { end(); }

bool CompanionProcess::end() {
    if (state() == NotRunning) return true;
    terminate();
    if (waitForFinished(kPatience)) return true;
    kill();
    waitForFinished(-1);
    return false;
}

Rehearsal::Rehearsal(const RehearsalKind& kind)
    : folder_(QDir::tempPath() + "/corvane-rehearsal-XXXXXX"), site_(exampleSite()) {
    if (!folder_.isValid()) fail(folder_.errorString());
    for (const auto* name : {"config", "data", "program/Download"}) {
        if (!QDir(folder_.path()).mkpath(name)) fail(path(name));
    }
    startServer();
    if (port_.isEmpty()) stockProgramFolder();
    startBench(kind.device);
}

/// Debian's own Python is the one that sees Debian's FTP server.
void Rehearsal::startServer() {
    static const QRegularExpression started("starting FTP server on 127\\.0\\.0\\.1:(\\d+)");
    server_.setProcessChannelMode(QProcess::MergedChannels);
    server_.start("/usr/bin/python3", {"-W", "ignore", "-m", "pyftpdlib", "-i", "127.0.0.1", "-p", "0", "-u", kAccount,
                                       "-P", kPassword, "-d", site_});
    QString said;
    while (server_.waitForReadyRead(kPatience)) {
        said += QString::fromUtf8(server_.readAll());
        port_ = started.match(said).captured(1);
        if (!port_.isEmpty()) return;
    }
}

/// Without a server the images lie in the Download folder, as if they had been fetched before.
void Rehearsal::stockProgramFolder() const {
    QFile::copy(site_ + "/firmware/firmware.inf", path("program/firmware.inf"));
    for (const auto& image : QDir(imageFolder()).entryInfoList(QDir::Files)) {
        QFile::copy(image.filePath(), path("program/Download/" + image.fileName()));
    }
}

void Rehearsal::startBench(const QString& device) {
    const auto ready = path("ready");
    QStringList arguments = {"--config-dir", path("config"), "--ready-file",       ready,     "--device",
                             device,         "--image",      site_ + kNewestImage, "--verify"};
    const auto server = port_.isEmpty() ? QString() : "127.0.0.1:" + port_;
    // Direct: the environment's proxy may not know this computer.
    for (const auto& setting :
         {QString("FTP/OffLine=") + (port_.isEmpty() ? "True" : "False"), "FTP/Server=" + server,
          QString("FTP/UserName=") + kAccount, QString("FTP/Password=") + kPassword, QString("FTP/AccessType=1")}) {
        arguments << "--setting" << setting;
    }
    bench_.start(QCoreApplication::applicationDirPath() + "/corvane-bench", arguments);
    constexpr int kLook = 20;  // ms
    for (int waited = 0; !QFileInfo::exists(ready); waited += kLook) {
        const bool isRunning = bench_.state() != QProcess::NotRunning && !bench_.waitForFinished(kLook);
        if (isRunning && waited < kPatience) continue;
        const auto said = QString::fromUtf8(bench_.readAllStandardError()).trimmed();
        fail(said.isEmpty() ? "corvane-bench: " + bench_.errorString() : said);
    }
    takeEnvironment(ready);
}

/// The bench names its transport library when it simulates readers. Otherwise none is loaded: a real reader must not be
/// touched by a rehearsal.
void Rehearsal::takeEnvironment(const QString& readyFile) const {
    qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
    qputenv("XDG_DATA_HOME", path("data").toUtf8());
    qputenv(kHidLibraryVariable, path("no-readers").toUtf8());
    QFile file(readyFile);
    if (!file.open(QIODevice::ReadOnly)) fail(file.errorString());
    for (const auto& line : file.readAll().split('\n')) {
        const auto equals = line.indexOf('=');
        if (line.startsWith("CORVANE_")) qputenv(line.left(equals).constData(), line.mid(equals + 1));
    }
}

QString Rehearsal::watermark() { return QObject::tr("REHEARSAL: no real device"); }

LinuxProgramFolder Rehearsal::programFolder() const {
    return LinuxProgramFolder({path("program/corvane").toStdString(), "none", path("data/Corvane").toStdString()});
}

QString Rehearsal::remark() const {
    return port_.isEmpty() ? QObject::tr(
                                 "There is no FTP server for Python (python3-pyftpdlib) on this system, so the "
                                 "rehearsal is off line.")
                           : QString();
}

int Rehearsal::end(std::ostream& report) {
    constexpr int kFailed = 1;
    const bool ended = bench_.end();
    report << bench_.readAllStandardOutput().toStdString() << bench_.readAllStandardError().toStdString() << std::flush;
    return ended && bench_.exitStatus() == QProcess::NormalExit ? bench_.exitCode() : kFailed;
}

}  // namespace corvane
