// Carries an update through the real window with nobody at it: presses the buttons and answers every question with OK.
// Says when the window was there, how long an event of it had to wait, and how long it took to close; writes a picture
// of the end. Without a display it needs none.
//
//     corvane-windowrun [--file IMAGE.hex] [--press BUTTON]... [--say] [--picture FILE.png] [--freeze PID]
//     [--only-show]
//                       [--rehearse KIND]
//
// --press names what starts a run (cmdStartCheck when it is not given), one run after the other; --say tells what the
// window says after each. --freeze stops that process (a server) before the window is closed, --only-show closes it as
// soon as it is there. --rehearse does all of it in a rehearsal, whose exit status it passes on. The moment of the
// start, in nanoseconds of the monotonic clock, is expected in CORVANE_STARTED.

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QSocketNotifier>
#include <QTextEdit>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <clocale>
#include <csignal>
#include <iostream>
#include <optional>

#include "platform/linux/LinuxPlatform.h"
#include "window/frmCorvane.h"
#include "window/rehearsal/Rehearsal.h"

namespace {

using corvane::PolledSource;
using corvane::Runtime;

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
        if (auto* list = dialog.findChild<QComboBox*>("cboROMs"); list && list->currentIndex() < 0)
            list->setCurrentIndex(0);
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

/// The program's runtime, with a note of how much time its fixed pauses took: during them no event is meant to come.
class PauseCounter : public Runtime {
public:
    explicit PauseCounter(Runtime& runtime) : runtime_(runtime) {}

    qint64 pausedNanoseconds() const { return paused_; }

    void Sleep(int ms) override {
        QElapsedTimer time;
        time.start();
        runtime_.Sleep(ms);
        paused_ += time.nsecsElapsed();
    }
    std::uint32_t tick() override { return runtime_.tick(); }
    std::int64_t micros() const override { return runtime_.micros(); }
    double secondsOfDay() override { return runtime_.secondsOfDay(); }
    std::string timestamp() override { return runtime_.timestamp(); }
    void WaitActivity(int ms) override { runtime_.WaitActivity(ms); }
    void expectNews(std::int64_t micros) override { runtime_.expectNews(micros); }
    void DoEvents() override { runtime_.DoEvents(); }
    void setPump(std::function<void()> pump) override { runtime_.setPump(std::move(pump)); }
    void setIdle(std::function<void()> idle) override { runtime_.setIdle(std::move(idle)); }
    int startTimer(int ms, std::function<void()> due) override { return runtime_.startTimer(ms, std::move(due)); }
    void stopTimer(int timer) override { runtime_.stopTimer(timer); }
    void post(const void* owner, std::function<void()> handler) override { runtime_.post(owner, std::move(handler)); }
    void forget(const void* owner) override { runtime_.forget(owner); }
    void add(PolledSource& source) override { runtime_.add(source); }
    void remove(PolledSource& source) override { runtime_.remove(source); }

private:
    Runtime& runtime_;
    qint64 paused_ = 0;
};

/// The longest time that went by between two events which wanted to come every few milliseconds, fixed pauses apart.
class Watch {
public:
    explicit Watch(const PauseCounter& pauses) : pauses_(pauses) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
        timer_.start(5);
    }
    double longestMs() const { return static_cast<double>(longest_) / 1e6; }

private:
    void look() {
        const auto paused = pauses_.pausedNanoseconds();
        if (clock_.isValid()) longest_ = std::max(longest_, clock_.nsecsElapsed() - (paused - paused_));
        paused_ = paused;
        clock_.start();
    }

    const PauseCounter& pauses_;
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longest_ = 0;
    qint64 paused_ = 0;
};

/// Says when a widget was painted for the first time.
class FirstSight : public QObject {
public:
    explicit FirstSight(QWidget& widget) { widget.installEventFilter(this); }

private:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            object->removeEventFilter(this);
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            const auto since = std::chrono::nanoseconds(now).count() - qgetenv("CORVANE_STARTED").toLongLong();
            std::cout << "the window was there after " << static_cast<double>(since) / 1e6 << " ms\n";
        }
        return false;
    }
};

void press(const corvane::frmCorvane& window, const QString& button) {
    window.findChild<QAbstractButton*>(button)->click();
}

/// The strip, the card and the status bar, a line each.
void say(const corvane::frmCorvane& window) {
    const auto line = [](const char* name, QString text) {
        std::cout << name << ": " << text.replace('\n', " / ").toStdString() << "\n";
    };
    line("strip", window.findChild<QLabel*>("labNotice")->text());
    line("card", window.findChild<QTextEdit*>("txtVerdict")->toPlainText());
    line("status", window.findChild<QLabel*>("labStatus")->text());
}

struct Script {
    explicit Script(const QStringList& words) : words_(words) {}

    bool has(const QString& name) const { return words_.contains(name); }
    QString value(const QString& name) const { return has(name) ? words_.value(words_.indexOf(name) + 1) : QString(); }
    QStringList buttons() const {
        QStringList names;
        for (qsizetype i = 0; i + 1 < words_.size(); ++i) {
            if (words_.at(i) == "--press") names.append(words_.at(i + 1));
        }
        return names.isEmpty() ? QStringList("cmdStartCheck") : names;
    }

private:
    QStringList words_;
};

void run(corvane::frmCorvane& window, const PauseCounter& pauses, const Script& script) {
    if (script.has("--file")) {
        press(window, "optLine1");
        press(window, "optFile");
    }
    for (const auto& button : script.buttons()) {
        QElapsedTimer time;
        time.start();
        const Watch watch(pauses);
        press(window, button);
        std::cout << "the run took " << time.elapsed() << " ms, an event waited at most " << watch.longestMs()
                  << " ms\n";
        if (script.has("--say")) say(window);
    }
    QCoreApplication::processEvents();
    const auto picture = script.value("--picture");
    if (!picture.isEmpty() && !window.grab().save(picture, "PNG", 0)) std::cerr << "the picture cannot be written\n";
}

void close(corvane::frmCorvane& window, const QString& frozen) {
    if (!frozen.isEmpty() && ::kill(frozen.toInt(), SIGSTOP) < 0) std::cerr << "there is no process to be stopped\n";
    QElapsedTimer time;
    time.start();
    window.close();
    std::cout << "closing took " << static_cast<double>(time.nsecsElapsed()) / 1e6 << " ms\n";
}

int showWindow(corvane::LinuxPlatform& system, const Script& script, const corvane::WindowOptions& options) {
    PauseCounter runtime(system.runtime());
    const auto real = system.seams();
    corvane::frmCorvane window({runtime, real.serial, real.ports, real.modules, real.reader, real.settings, real.folder,
                                real.launcher, real.digest, real.inspector, real.inhibitor, real.power, real.files,
                                real.processes, real.hidLibrary, real.signatures, real.keys},
                               options);
    QSocketNotifier due(system.runtime().descriptor(), QSocketNotifier::Read);
    QObject::connect(&due, &QSocketNotifier::activated, &due, [&system] { system.runtime().dispatch(); });
    const Agreeable operatorAtWork(script.value("--file"));
    const FirstSight sight(window);
    window.show();
    QTimer::singleShot(0, &window, [&] {
        QCoreApplication::processEvents();
        if (!script.has("--only-show")) run(window, runtime, script);
        close(window, script.value("--freeze"));
    });
    return QApplication::exec();
}

int rehearse(const Script& script, corvane::WindowOptions options) {
    for (const auto& kind : corvane::rehearsalKinds()) {
        if (kind.word != script.value("--rehearse")) continue;
        corvane::Rehearsal rehearsal(kind);
        options.rehearsal = corvane::Rehearsal::watermark();
        {
            corvane::LinuxPlatform system(rehearsal.programFolder());
            showWindow(system, script, options);
        }
        return rehearsal.end(std::cout);
    }
    throw std::runtime_error("there is no such rehearsal");
}

}  // namespace

int main(int argc, char** argv) try {
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    const Script script(QCoreApplication::arguments());
    corvane::WindowOptions options;
    options.usesQtDialogs = true;
    if (script.has("--rehearse")) return rehearse(script, options);
    corvane::LinuxPlatform system;
    return showWindow(system, script, options);
} catch (const std::exception& error) {
    std::cerr << "corvane-windowrun: " << error.what() << "\n";
    return 1;
}
