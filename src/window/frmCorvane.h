#pragma once

#include <QMainWindow>
#include <QPushButton>
#include <QTimer>
#include <functional>

#include "window/MainControls.h"
#include "window/dialogs/FileDialogs.h"
#include "window/dialogs/Questions.h"
#include "window/presenter/MainPresenter.h"
#include "window/presenter/ProgressMeter.h"

namespace corvane {

/// What a window takes from the surroundings of the program.
struct WindowOptions {
    bool usesQtDialogs = false;  ///< Qt's own file dialogs instead of the desktop's
    QString rehearsal = {};      ///< what says plainly that no device is real; empty when they are
    QString folder = {};         ///< where the first file dialog begins
    QString remark = {};         ///< something to say at the start

    FaceWitness witness = {};

    /// Tells an operator who looks elsewhere how a run has ended, with what is to be done where that is not nothing.
    std::function<void(const QString& headline, const QString& text, bool asksForHelp)> notify = {};

    /// Starts a rehearsal beside this window: why it did not work, or an empty text. Without it none is offered.
    std::function<QString()> rehearse = {};
};

/// The main window: shows what the workflow says and hands clicks to it. It owns the workflow, not the platform. While
/// a run is on, Qt's events are handled inside the runtime's waits, for the run does not return before its end. Once
/// the window is closed, the ports are closed and the session with the site has ended.
class frmCorvane final : public QMainWindow, private RunView, private Progress {
public:
    explicit frmCorvane(const Platform& platform, const WindowOptions& options = {});
    ~frmCorvane() override;

    /// As a click on the window's close button, also when a dialog is open.
    void closeFromOutside();

    /// A port or a reader may have come or gone.
    void lookAtPorts() { presenter_.lookAtPorts(); }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void running(bool isRunning) override;
    void cancellable(bool isCancellable) override;
    void phase(RunPhase phase) override;
    void links(const std::vector<ReferenceLink>& links) override;
    void advice(const std::string& text) override;
    void progress(std::int64_t value, std::int64_t maximum) override;
    void transferred(std::int64_t bytes, std::int64_t total) override;

    Face face();
    QPushButton& largeButton() const { return ui_.cmdForceISP->isDefault() ? *ui_.cmdForceISP : *ui_.cmdStartCheck; }
    void connectChoices();
    void connectRun();
    void connectDetails();
    void pump(std::uint32_t pause);
    void showProgress();
    void startRun(bool force);
    void conclude(const Outcome& outcome);
    void handOver();
    void refresh();
    void showSituation();
    void showChoices();
    void say(const QString& text);
    void portRefused(const std::string& port);
    void cmdOption_Click();
    void lstRefer_Click(int index);
    void saveFetched(const std::string& file);
    void cmdLoadFile_Click();
    void mnuRehearse_Click();
    void saveLog();
    void saveReport();
    void backFromDialog();

    Platform platform_;
    WindowOptions options_;
    MainControls ui_;
    Questions questions_;
    Updater updater_;
    MainPresenter presenter_;
    ProgressMeter meter_;
    FileDialogs files_;
    QTimer portLook_;             // while no run is on
    std::uint32_t lastPump_ = 0;  // ticks
    std::uint32_t lastProgress_ = 0;
    bool hasEnded_ = false;
};

}  // namespace corvane
