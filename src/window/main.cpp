#include <QApplication>
#include <QIcon>
#include <QSocketNotifier>
#include <clocale>
#include <cstdio>
#include <exception>

#include "app/ProgramInfo.h"
#include "platform/linux/LinuxConsole.h"
#include "platform/linux/LinuxPlatform.h"
#include "window/frmCorvane.h"

int main(int argc, char** argv) try {
    corvane::LinuxPlatform system;
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");  // Qt takes the user's, which is for what people read
    QCoreApplication::setApplicationName(corvane::kProgramTitle);
    QCoreApplication::setApplicationVersion(QString::fromStdString(corvane::programVersion()));
    QGuiApplication::setDesktopFileName("corvane");
    QApplication::setWindowIcon(QIcon::fromTheme("corvane"));

    corvane::WindowOptions options;
    options.usesQtDialogs = qEnvironmentVariableIsSet("CORVANE_QT_DIALOGS");
    corvane::frmCorvane window(system.seams(), options);
    const corvane::SignalSource signals(system.runtime(), [&window] { window.closeFromOutside(); });
    QSocketNotifier due(system.runtime().descriptor(), QSocketNotifier::Read);
    QObject::connect(&due, &QSocketNotifier::activated, &due, [&system] { system.runtime().dispatch(); });
    window.show();
    return QApplication::exec();
} catch (const std::exception& error) {
    std::fprintf(stderr, "corvane: %s\n", error.what());
    return 4;
}
