// Carries an update through the real window with nobody at it: presses the buttons and answers every question with OK.
// Says how long an event of the window had to wait, and writes a picture of the end. Without a display it needs none.
//
//     corvane-windowrun [--file IMAGE.hex] [--picture FILE.png]

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <clocale>
#include <iostream>

#include "platform/linux/LinuxPlatform.h"
#include "window/frmCorvane.h"

namespace {

/// Somebody who agrees to everything and has one file.
class Agreeable : public QObject {
public:
    explicit Agreeable(QString file) : file_(std::move(file)) { qApp->installEventFilter(this); }

private:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(object) : nullptr;
        if (dialog && dialog->isModal()) QTimer::singleShot(0, dialog, [this, dialog] { answer(*dialog); });
        return false;
    }

    void answer(QDialog& dialog) {
        if (auto* name = dialog.findChild<QLineEdit*>("fileNameEdit")) {
            name->setText(file_);
            QMetaObject::invokeMethod(&dialog, "accept");
        } else if (auto* ok = dialog.findChild<QAbstractButton*>("cmdOK"); ok && ok->isEnabled()) {
            ok->click();
        } else {
            dialog.reject();
        }
    }

    QString file_;
};

/// The longest time that went by between two events which wanted to come every few milliseconds.
class Watch {
public:
    Watch() {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            longest_ = std::max(longest_, clock_.isValid() ? clock_.elapsed() : 0);
            clock_.start();
        });
        timer_.start(5);
    }
    qint64 longest() const { return longest_; }

private:
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longest_ = 0;
};

void press(const corvane::frmCorvane& window, const char* button) {
    window.findChild<QAbstractButton*>(button)->click();
}

void run(corvane::frmCorvane& window, const QString& file, const QString& picture) {
    if (!file.isEmpty()) {
        press(window, "optLine1");
        press(window, "optFile");
    }
    QElapsedTimer time;
    time.start();
    const Watch watch;
    press(window, "cmdStartCheck");
    std::cout << "the run took " << time.elapsed() << " ms, an event waited at most " << watch.longest() << " ms\n";
    QCoreApplication::processEvents();
    if (!picture.isEmpty() && !window.grab().save(picture, "PNG", 0)) std::cerr << "the picture cannot be written\n";
    window.close();
}

}  // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    const auto arguments = QCoreApplication::arguments();
    const auto option = [&](const QString& name) {
        const auto at = arguments.indexOf(name);
        return at < 0 ? QString() : arguments.value(at + 1);
    };
    corvane::LinuxPlatform system;
    corvane::frmCorvane window(system.seams(), {true});
    QSocketNotifier due(system.runtime().descriptor(), QSocketNotifier::Read);
    QObject::connect(&due, &QSocketNotifier::activated, &due, [&system] { system.runtime().dispatch(); });
    const Agreeable operatorAtWork(option("--file"));
    window.show();
    QTimer::singleShot(0, &window, [&] { run(window, option("--file"), option("--picture")); });
    return QApplication::exec();
}
