#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <ostream>
#include <vector>

#include "platform/linux/LinuxProgramFolder.h"

namespace corvane {

/// Something to practise.
struct RehearsalKind {
    QString word;  ///< on the command line
    QString title;
    QString description;
    QString device;  ///< for the bench
};

/// All of them, the plain update first.
const std::vector<RehearsalKind>& rehearsalKinds();

/// A child process that never outlives this program, not even when this program is killed.
class CompanionProcess : public QProcess {
public:
    CompanionProcess();
    ~CompanionProcess() override;

    /// False when it had to be killed.
    bool end();
};

/// An update without hardware: a simulated device, which is a corvane-bench of its own, and a site where this system
/// has an FTP server for Python. Settings, program folder, journal and job record lie in a folder of its own, to which
/// it points this program's environment variables: only what is made after it sees the rehearsal and nothing else. Its
/// destructor ends what it has started and removes what was written. The constructor throws std::runtime_error when the
/// bench or the images are not to be had.
class Rehearsal {
public:
    explicit Rehearsal(const RehearsalKind& kind);

    /// What the window says all the time.
    static QString watermark();

    /// Where downloads go during the rehearsal, instead of the program's own folder.
    LinuxProgramFolder programFolder() const;

    /// Where images lie that can be chosen as local files.
    QString imageFolder() const { return site_ + "/firmware/images"; }

    /// What the operator should know at its start, say that there is no server; empty when nothing is missing.
    QString remark() const;

    /// Ends the simulated device and writes what it says about itself. 0 only when its memory is that of the newest
    /// image for it.
    int end(std::ostream& report);

private:
    void startServer();
    void startBench(const QString& device);
    void takeEnvironment(const QString& readyFile) const;
    void stockProgramFolder() const;
    QString path(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    QString site_;  // the example site's folder
    QString port_;  // of its server; empty without one
    CompanionProcess server_;
    CompanionProcess bench_;
};

}  // namespace corvane
