#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QProcess>
#include <QSocketNotifier>
#include <clocale>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>

#include "platform/ProgramInfo.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/Signals.h"
#include "platform/linux/desktop/DesktopNotifier.h"
#include "platform/linux/desktop/LogindInhibitor.h"
#include "platform/linux/events/PortEvents.h"
#include "platform/linux/files/StandardDescriptors.h"
#include "window/frmCorvane.h"
#include "window/rehearsal/Rehearsal.h"
#include "window/rehearsal/frmRehearsal.h"
#include "window/widgets/ProgramIcon.h"

namespace {

using namespace corvane;

constexpr int kCancelled = 1, kWrongUsage = 2, kFailed = 4;

std::string usageText() {
    std::string words;
    for (const auto& kind : rehearsalKinds()) words += "  " + kind.word.toStdString() + "\n";
    return "corvane [--rehearse[=KIND]]\n"
           "\n"
           "Updates the firmware of a device on a serial port or behind a USB reader.\n"
           "\n"
           "  --rehearse[=KIND]  the same window with a simulated device, to practise on; nothing of it is kept\n"
           "  --version, --help\n"
           "\n"
           "KIND is one of these; without it the program asks:\n" +
           words;
}

struct Arguments {
    bool rehearses = false;
    const RehearsalKind* kind = nullptr;  ///< none: the operator is asked
    std::string problem;
};

/// Of those that Qt has left.
Arguments parsed(const QStringList& words) {
    Arguments arguments;
    for (const auto& word : words.mid(1)) {
        arguments.rehearses = word == "--rehearse" || word.startsWith("--rehearse=");
        if (!arguments.rehearses) arguments.problem = "unknown argument \"" + word.toStdString() + "\"";
        for (const auto& kind : rehearsalKinds()) {
            if (word == "--rehearse=" + kind.word) arguments.kind = &kind;
        }
        if (word.startsWith("--rehearse=") && !arguments.kind)
            arguments.problem = "nothing to rehearse is called \"" + word.mid(11).toStdString() + "\"";
    }
    return arguments;
}

int showWindow(LinuxPlatform& system, SleepInhibitor& inhibitor, const WindowOptions& options) {
    frmCorvane window(system.seams(inhibitor), options);
    const SignalSource signals(system.runtime(), [&window] { window.closeFromOutside(); });
    const PortEvents portEvents(system.runtime(), [&window] { window.lookAtPorts(); });
    QSocketNotifier due(system.runtime().descriptor(), QSocketNotifier::Read);
    QObject::connect(&due, &QSocketNotifier::activated, &due, [&system] { system.runtime().dispatch(); });
    window.show();
    return QApplication::exec();
}

WindowOptions options() {
    WindowOptions options;
    options.usesQtDialogs = qEnvironmentVariableIsSet("CORVANE_QT_DIALOGS");
    options.notify = [](const QString& headline, const QString& text, bool asksForHelp) {
        DesktopNotifier().tell(headline, text, asksForHelp);
    };
    options.rehearse = [] {
        QProcess other;
        other.setProgram(QCoreApplication::applicationFilePath());
        other.setArguments({"--rehearse"});
        return other.startDetached() ? QString() : other.errorString();
    };
    return options;
}

/// Its exit status is the simulated device's, which tells whether it was updated.
int rehearse(const RehearsalKind* kind) {
    if (!kind) {
        releaseSignals();  // nothing would be left half done
        frmRehearsal question;
        if (question.exec() != QDialog::Accepted) return kCancelled;
        kind = &question.chosen();
        // From here there are files to put away, so who wants the program to end waits for the window that takes the
        // signals.
        holdEndingSignals();
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    Rehearsal rehearsal(*kind);
    QApplication::restoreOverrideCursor();
    auto windowOptions = options();
    windowOptions.rehearsal = Rehearsal::watermark();
    windowOptions.remark = rehearsal.remark();
    windowOptions.folder = rehearsal.imageFolder();
    {
        LinuxPlatform system(rehearsal.programFolder());
        NoInhibitor noInhibitor;
        showWindow(system, noInhibitor, windowOptions);
    }
    return rehearsal.end(std::cout);
}

int runProgram(const Arguments& arguments) {
    if (!arguments.rehearses) {
        LinuxPlatform system;
        LogindInhibitor inhibitor;
        return showWindow(system, inhibitor, options());
    }
    try {
        return rehearse(arguments.kind);
    } catch (const std::exception& error) {
        QApplication::restoreOverrideCursor();
        if (arguments.kind) throw;  // a script has named it
        QMessageBox::critical(nullptr, kProgramTitle,
                              QObject::tr("The rehearsal does not start: %1").arg(error.what()));
        throw;
    }
}

}  // namespace

int main(int argc, char** argv) try {
    fillStandardDescriptors();
    for (int i = 1; i < argc; ++i) {  // both need no display
        const std::string word = argv[i];
        if (word == "--version") return std::cout << "corvane " << programVersion() << "\n", 0;
        if (word == "--help" || word == "-h") return std::cout << usageText(), 0;
    }
    // Before Qt begins threads of its own: a signal goes to any thread that does not hold it back.
    ignoreIdleSignals();
    releaseSignals();  // a window that has started this one holds them back
    holdEndingSignals();
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");  // Qt takes the user's, which is for what people read
    QCoreApplication::setApplicationName(kProgramTitle);
    QCoreApplication::setApplicationVersion(QString::fromStdString(programVersion()));
    QGuiApplication::setDesktopFileName("corvane");
    QApplication::setWindowIcon(QIcon::fromTheme("corvane", programIcon()));
    const auto arguments = parsed(QCoreApplication::arguments());
    if (!arguments.problem.empty()) {
        std::cerr << "corvane: " << arguments.problem << "\n\n" << usageText();
        return kWrongUsage;
    }
    return runProgram(arguments);
} catch (const std::exception& error) {
    std::fprintf(stderr, "corvane: %s\n", error.what());
    return kFailed;
}
