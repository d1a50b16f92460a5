#include "window/frmCorvane.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <algorithm>

#include "platform/ProgramInfo.h"
#include "window/dialogs/Help.h"
#include "window/dialogs/ReportSaver.h"
#include "window/dialogs/frmConnection.h"
#include "window/dialogs/frmJobs.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

/// A label that takes no room while it has nothing to say.
void showIn(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

/// What a button does, for the eye and for a screen reader, which needs no mark of the key.
void showIn(QPushButton* button, const std::string& caption) {
    const auto text = QString::fromStdString(caption);
    button->setText(text);
    button->setAccessibleName(QString(text).replace("&&", "\x01").remove('&').replace('\x01', '&'));
}

}  // namespace

frmCorvane::frmCorvane(const Platform& platform, const WindowOptions& options)
    : platform_(platform),
      options_(options),
      ui_(*this),
      questions_(*this),
      updater_(platform_, face()),
      presenter_(updater_),
      files_(*this, options.usesQtDialogs, options.folder) {
    named(this, "frmCorvane");
    ui_.labVersion->setText(QString::fromStdString(programVersion()));
    showIn(ui_.labRehearsal, options_.rehearsal);
    ui_.emphasize(false);
    ui_.applyPalette(*this);
    setAcceptDrops(true);
    connectChoices();
    connectRun();
    connectDetails();
    constexpr std::uint32_t kPause = 30, kLongestPause = 40;  // ms
    platform_.runtime.setIdle([this] { pump(kPause); });
    platform_.runtime.setPump([this] { pump(kLongestPause); });
    presenter_.load();
    presenter_.lookAtPorts();
    if (!options_.remark.isEmpty()) say(options_.remark);
    for (const auto& problem : StoredSettings(platform_.settings).problems()) say(QString::fromStdString(problem));
    for (const auto& problem : platform_.ports.problems()) say(QString::fromStdString(problem));
    showProgress();
    resize(QSize(720, 600).boundedTo(screen()->availableSize()));
    largeButton().setFocus();
}

frmCorvane::~frmCorvane() {
    platform_.runtime.setIdle(nullptr);
    platform_.runtime.setPump(nullptr);
}

Face frmCorvane::face() {
    const Face face{*ui_.txtInfo, *this, *ui_.frameComport, questions_, questions_, *this};
    return options_.witness ? options_.witness(face) : face;
}

void frmCorvane::connectChoices() {
    const auto& source = ui_.source;
    presenter_.onChange = [this] { refresh(); };
    presenter_.pickFile = [this] { return files_.pickImage(); };
    // "clicked" and not "toggled": a button that is set by refresh was not clicked.
    connect(source.optLine[0], &QRadioButton::clicked, this, [this] { presenter_.optLine_Click(false); });
    connect(source.optLine[1], &QRadioButton::clicked, this, [this] { presenter_.optLine_Click(true); });
    connect(source.optLast, &QRadioButton::clicked, this, [this] { presenter_.optLast_Click(); });
    connect(source.optFile, &QRadioButton::clicked, this,
            [this] { ui_.source.isWalking() ? presenter_.optFile_Walked() : presenter_.optFile_Click(); });
    connect(source.cmdLoadFile, &QPushButton::clicked, this, [this] { cmdLoadFile_Click(); });
    connect(source.mnuRecent, &QMenu::aboutToShow, this, [this] {
        ui_.source.fillRecent(presenter_.recentFiles(), [this](const std::string& file) { presenter_.loadFile(file); });
    });
    connect(source.cmdOption, &QPushButton::clicked, this, [this] { cmdOption_Click(); });
    for (auto* field : {source.txtServer, source.txtAccount[0], source.txtAccount[1]}) {
        field->setAcceptDrops(false);  // a file that is dropped here is an image, too
        connect(field, &QLineEdit::textEdited, this, [this] {
            presenter_.account(ui_.source.txtServer->text().toStdString(),
                               ui_.source.txtAccount[0]->text().toStdString(),
                               ui_.source.txtAccount[1]->text().toStdString());
        });
    }
    constexpr int kPortLook = 1000;  // ms
    connect(&portLook_, &QTimer::timeout, this, [this] { presenter_.lookAtPorts(); });
    portLook_.start(kPortLook);
}

void frmCorvane::connectRun() {
    connect(ui_.cmdStartCheck, &QPushButton::clicked, this, [this] { startRun(false); });
    connect(ui_.cmdForceISP, &QPushButton::clicked, this, [this] { startRun(true); });
    connect(ui_.chkSeries, &QCheckBox::clicked, this, [this](bool isOn) { presenter_.chkSeries_Click(isOn); });
    connect(ui_.cmdCancel, &QPushButton::clicked, this, [this] { presenter_.cmdCancel_Click(); });
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, ui_.cmdCancel, &QPushButton::click);
    ui_.frameComport->onClick = [this](int index) { presenter_.cmdComport_Click(index); };
    ui_.frameComport->isScanned = [this](const std::string& port) {
        return updater_.serialPort().IsMyCommPort(port) || updater_.hidPort().IsMyCommPort(port);
    };
    ui_.frameComport->onRefused = [this](const std::string& port) { portRefused(port); };
    ui_.frameComport->onScan = [this](const std::vector<std::string>& ports) {
        ui_.showScan(true);
        for (const auto& advice : updater_.advisor().beforeScan(ports)) say(QString::fromStdString(advice));
    };
    ui_.frameComport->onEnd = [this] { ui_.showScan(false); };
    ui_.lstRefer->onOpen = [this](int index) { lstRefer_Click(index); };
    updater_.onReader = [this](const std::string& text, bool isPluggedIn) {
        presenter_.readerChanged(text, isPluggedIn);
        showSituation();
    };
    questions_.localImage = [this](const FirmwareRecord& record) {
        return updater_.selection().localImage(record, platform_.digest);
    };
}

void frmCorvane::connectDetails() {
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now && ui_.column->widget()->isAncestorOf(now)) ui_.column->ensureWidgetVisible(now);
    });
    connect(ui_.cmdCopyLog, &QPushButton::clicked, this, [this] { ui_.txtInfo->copyAll(); });
    connect(ui_.cmdSaveLog, &QPushButton::clicked, this, [this] { saveLog(); });
    ui_.cmdForget->onForget = [this](const InterruptedRun& run) { presenter_.forget(run); };
    connect(ui_.mnuSaveLog, &QAction::triggered, this, [this] { saveLog(); });
    connect(ui_.cmdReport, &QPushButton::clicked, this, [this] { saveReport(); });
    connect(ui_.mnuSaveReport, &QAction::triggered, this, [this] { saveReport(); });
    connect(ui_.mnuManual, &QAction::triggered, this, [this] { showManual(this); });
    connect(ui_.mnuAbout, &QAction::triggered, this, [this] { showAbout(this); });
    connect(ui_.mnuJobs, &QAction::triggered, this, [this] { frmJobs(updater_.jobs(), this).exec(); });
    ui_.mnuRehearse->setEnabled(static_cast<bool>(options_.rehearse));
    connect(ui_.mnuRehearse, &QAction::triggered, this, [this] { mnuRehearse_Click(); });
    connect(ui_.mnuQuit, &QAction::triggered, this, [this] { close(); });
}

/// Handles Qt's events, unless that was done less than pause (ms) ago: with a fast device the runtime calls this
/// thousands of times a second. Without a run the call comes out of another handler, in which no run may be started;
/// so clicks wait.
void frmCorvane::pump(std::uint32_t pause) {
    constexpr std::uint32_t kCalm = 500;  // ms
    if (platform_.runtime.tick() - lastPump_ < pause) return;
    if (presenter_.isBusy() && platform_.runtime.tick() - lastProgress_ >= kCalm) showProgress();
    QCoreApplication::processEvents(presenter_.isBusy() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    lastPump_ = platform_.runtime.tick();
}

void frmCorvane::startRun(bool force) {
    if (presenter_.isBusy()) return;
    questions_.renew();
    if (force) presenter_.takeRescueImage();
    Outcome outcome;
    do {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        outcome = presenter_.start(force);
        QApplication::restoreOverrideCursor();
        if (outcome.end == RunEnd::handedOver) return handOver();
        conclude(outcome);
    } while (presenter_.waitForNext(outcome));
    if (presenter_.closesAfter(outcome)) close();
}

void frmCorvane::conclude(const Outcome& outcome) {
    const auto verdict = presenter_.conclude(outcome);
    const bool isUpdated = verdict.kind == Verdict::Kind::updated;
    meter_.end(isUpdated);
    showProgress();
    ui_.pbProgram->setVisible(isUpdated);
    const int devices = updater_.jobs().updatedDevices();
    if (devices > 0)
        ui_.labJobs->setText(devices == 1 ? tr("1 device updated") : tr("%1 devices updated").arg(devices));
    ui_.card->takeFocus();
    ui_.column->ensureWidgetVisible(ui_.card);
    if (!options_.notify || isActiveWindow() || presenter_.isWaiting()) return;
    const auto card = presenter_.situation().card();
    options_.notify(QString::fromStdString(card.headline), QString::fromStdString(card.textBelow()),
                    card.tone == Card::Tone::danger);
}

/// The newer program has been started and takes over; what was typed here is not saved over its settings.
void frmCorvane::handOver() {
    hasEnded_ = true;
    updater_.shutDown();
    close();
}

void frmCorvane::closeFromOutside() {
    if (!presenter_.isBusy()) {
        while (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) dialog->reject();
    }
    close();
}

void frmCorvane::closeEvent(QCloseEvent* event) {
    const auto closing = presenter_.close(questions_.isAskingAboutHarm());
    event->setAccepted(closing == MainPresenter::Closing::now);
    if (closing == MainPresenter::Closing::cancels) questions_.abandon();
    showSituation();
    if (!event->isAccepted() || hasEnded_) return;
    hasEnded_ = true;
    portLook_.stop();
    if (presenter_.unload()) return;
    QMessageBox box(QMessageBox::Warning, kProgramTitle, tr("The settings could not be saved."), QMessageBox::Ok, this);
    named(&box, "frmProblem");
    box.button(QMessageBox::Ok)->setObjectName("cmdOK");
    box.exec();
}

/// Return does what the large button says, from wherever it means nothing else, as it does in a dialog.
void frmCorvane::keyPressEvent(QKeyEvent* event) {
    const auto* at = focusWidget();
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isElsewhere = at && (at->inherits("QPushButton") || at->inherits("QAbstractItemView"));
    if (!isReturn || isElsewhere || presenter_.isBusy()) return QMainWindow::keyPressEvent(event);
    largeButton().click();
}

void frmCorvane::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ApplicationPaletteChange) ui_.applyPalette(*this);
}

/// One file of this computer is an image to install.
void frmCorvane::dragEnterEvent(QDragEnterEvent* event) {
    const auto urls = event->mimeData()->urls();
    if (!presenter_.isBusy() && urls.size() == 1 && urls.front().isLocalFile()) event->acceptProposedAction();
}

void frmCorvane::dropEvent(QDropEvent* event) {
    if (presenter_.isBusy()) return;
    presenter_.dropFile(toPath(event->mimeData()->urls().front().toLocalFile()));
    event->acceptProposedAction();
}

void frmCorvane::running(bool isRunning) {
    const bool isAtWork = isRunning && !presenter_.isWaiting();
    presenter_.situation().running(isRunning);
    if (isAtWork) meter_.begin(!presenter_.choices().offLine, platform_.runtime.tick());
    for (QWidget* idle :
         {ui_.choices, ui_.devices, static_cast<QWidget*>(ui_.cmdStartCheck), static_cast<QWidget*>(ui_.cmdForceISP)})
        idle->setVisible(!isRunning);
    ui_.pbProgram->setVisible(isAtWork);
    ui_.cmdCancel->setVisible(isRunning);
    refresh();
    if (isRunning) ui_.cmdCancel->setFocus();
}

/// When Cancel is over, the card is what there is to know.
void frmCorvane::cancellable(bool isCancellable) {
    refresh();
    if (!isCancellable && presenter_.isBusy()) ui_.card->takeFocus();
}

void frmCorvane::phase(RunPhase phase) {
    presenter_.situation().phase(phase);
    if (phase == RunPhase::selection) presenter_.situation().found(updater_.run().facts());
    meter_.phase(phase, platform_.runtime.tick());
    if (phase == RunPhase::program) {
        meter_.records(static_cast<std::int64_t>(updater_.run().facts().image.report().records));
    }
    showSituation();
    showProgress();
}

void frmCorvane::transferred(std::int64_t bytes, std::int64_t total) {
    meter_.transfer(bytes, total, platform_.runtime.tick());
}

/// Noted here and shown by the pump: a bar that is painted for each record costs more than sending one.
void frmCorvane::progress(std::int64_t value, std::int64_t maximum) {
    meter_.progress(value, maximum, platform_.runtime.tick());
}

void frmCorvane::showProgress() {
    lastProgress_ = platform_.runtime.tick();
    ui_.pbProgram->setValue(meter_.permille(lastProgress_));
    ui_.pbProgram->setFormat(QString::number(meter_.percent()) + " %");
    showIn(ui_.labPhase, QString::fromStdString(meter_.text()));
    ui_.picLink->advance();
    const auto title = QString::fromStdString(meter_.title());
    const auto program =
        options_.rehearsal.isEmpty() ? QString(kProgramTitle) : tr("%1 (rehearsal)").arg(kProgramTitle);
    setWindowTitle(title.isEmpty() ? program : tr("%1 - %2").arg(title, program));
}

void frmCorvane::links(const std::vector<ReferenceLink>& links) {
    ui_.lstRefer->show(links);
    ui_.references->setVisible(!links.empty());
}

void frmCorvane::advice(const std::string& text) { say(QString::fromStdString(text)); }

void frmCorvane::say(const QString& text) {
    presenter_.situation().say(text.toStdString());
    showSituation();
}

void frmCorvane::portRefused(const std::string& port) {
    const auto reason = updater_.refusal(port);
    if (!reason.empty()) say(QString::fromStdString(reason));
}

void frmCorvane::showSituation() {
    const auto& situation = presenter_.situation();
    const auto card = situation.card();
    const auto device = QString::fromStdString(situation.device());
    ui_.card->show(card);
    ui_.picLink->show(card.cable);
    ui_.cmdForget->offer(situation.left());
    showIn(ui_.labStatus, QString::fromStdString(situation.hints()));
    showIn(ui_.labDevice, device);
    QStringList facts;
    for (const auto& fact : situation.facts()) facts.append(QString::fromStdString(fact));
    showIn(ui_.labFacts, facts.join('\n'));
    showIn(ui_.cmdStartCheck, card.start);
    showIn(ui_.cmdForceISP, card.force);
    ui_.emphasize(card.callsForForce);
    ui_.cmdReport->setVisible(card.offersReport);
    if (!card.isLarge && !presenter_.isBusy()) ui_.pbProgram->hide();
}

void frmCorvane::showChoices() {
    const auto& choices = presenter_.choices();
    ui_.source.show(choices, presenter_.localStep(presenter_.situation().deviceVersion()));
    const auto map = presenter_.localMap();
    ui_.picMemory->showMap(map);
    ui_.picMemory->setVisible(choices.isLocalFile() && map.has_value());
    ui_.lstPorts->showRows(updater_.portList().rows());
}

void frmCorvane::refresh() {
    showChoices();
    showSituation();
    ui_.enable(presenter_.controls(), updater_.reports().isThere());
}

/// A file has been chosen: the next thing is to install it.
void frmCorvane::cmdLoadFile_Click() {
    presenter_.cmdLoadFile_Click();
    if (largeButton().isEnabled()) largeButton().setFocus();
}

void frmCorvane::mnuRehearse_Click() {
    const auto problem = options_.rehearse();
    if (!problem.isEmpty()) say(tr("The rehearsal does not start: %1").arg(problem));
}

void frmCorvane::cmdOption_Click() {
    frmConnection(platform_.settings, this).exec();
    backFromDialog();
}

void frmCorvane::lstRefer_Click(int index) {
    const auto opened = presenter_.openLink(index);
    if (!opened.problem.empty())
        say(tr("The link could not be opened: %1").arg(QString::fromStdString(opened.problem)));
    if (presenter_.closesAfterFetching()) {
        close();
    } else if (!opened.file.empty()) {
        saveFetched(opened.file);
    }
}

/// For a file that the desktop might run when it is asked to open it.
void frmCorvane::saveFetched(const std::string& file) {
    const auto path = files_.placeFor(QFileInfo(fromPath(file)).fileName());
    if (path.isEmpty()) return;
    const auto problem = presenter_.saveFetched(file, toPath(path));
    if (!problem.empty()) say(tr("The file could not be saved: %1").arg(QString::fromStdString(problem)));
}

/// Some window managers leave the keyboard nowhere when a dialog has closed.
void frmCorvane::backFromDialog() {
    if (isVisible()) activateWindow();
}

void frmCorvane::saveReport() {
    const auto said = corvane::saveReport(*this, updater_.reports(), files_);
    backFromDialog();
    if (!said.isEmpty()) say(said);
}

void frmCorvane::saveLog() {
    const auto path = files_.placeForLog();
    if (path.isEmpty()) return;
    const auto problem = ui_.txtInfo->save(path);
    if (!problem.isEmpty()) say(tr("The log could not be saved: %1").arg(problem));
}

}  // namespace corvane
