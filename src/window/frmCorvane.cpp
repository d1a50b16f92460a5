#include "window/frmCorvane.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
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
#include <QShortcut>
#include <QStackedWidget>
#include <algorithm>

#include "platform/ProgramInfo.h"
#include "window/dialogs/frmConnection.h"
#include "window/dialogs/frmJobs.h"
#include "window/presenter/RunNotice.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

constexpr int kSitePage = 0, kLocalPage = 1;
constexpr int kDeviceText = 0, kDevicePorts = 1;

/// A long name with its middle left out.
QString shortened(const QString& name) {
    constexpr qsizetype kEnd = 18;
    return name.size() <= 2 * kEnd + 1 ? name : name.left(kEnd) + "\u2026" + name.right(kEnd);
}

}  // namespace

frmCorvane::frmCorvane(const Platform& platform, const WindowOptions& options)
    : platform_(platform),
      options_(options),
      ui_(*this),
      questions_(*this),
      updater_(platform_, face()),
      presenter_(updater_) {
    named(this, "frmCorvane");
    ui_.labVersion->setText(QString::fromStdString(programVersion()));
    ui_.labRehearsal->setText(options_.rehearsal);
    ui_.labRehearsal->setVisible(!options_.rehearsal.isEmpty());
    folder_ = options_.folder;
    showDevice({});
    setAcceptDrops(true);
    connectChoices();
    connectRun();
    connectLog();
    constexpr std::uint32_t kPause = 30, kLongestPause = 40;  // ms
    platform_.runtime.setIdle([this] { pump(kPause); });
    platform_.runtime.setPump([this] { pump(kLongestPause); });
    ui_.notice->say(noticeAtStart(updater_.journal().read()));
    phase(RunPhase::idle);
    presenter_.load();
    if (!options_.remark.isEmpty()) say(options_.remark);
    for (const auto& problem : platform_.ports.problems()) say(QString::fromStdString(problem));
    resize(QSize(900, 640).boundedTo(screen()->availableSize()));
    ui_.cmdStartCheck->setFocus();
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
    presenter_.onChange = [this] { refresh(); };
    presenter_.pickFile = [this] { return pickFile(); };
    // "clicked" and not "toggled": a button that is set by refresh was not clicked.
    connect(ui_.optLine[0], &QRadioButton::clicked, this, [this] { presenter_.optLine_Click(false); });
    connect(ui_.optLine[1], &QRadioButton::clicked, this, [this] { presenter_.optLine_Click(true); });
    connect(ui_.optLast, &QRadioButton::clicked, this, [this] { presenter_.optLast_Click(); });
    connect(ui_.optFile, &QRadioButton::clicked, this, [this] { presenter_.optFile_Click(); });
    connect(ui_.cmdLoadFile, &QPushButton::clicked, this, [this] { presenter_.cmdLoadFile_Click(); });
    connect(ui_.mnuRecent, &QMenu::aboutToShow, this, [this] { fillRecent(); });
    connect(ui_.cmdOption, &QPushButton::clicked, this, [this] { cmdOption_Click(); });
    for (auto* field : {ui_.txtServer, ui_.txtAccount[0], ui_.txtAccount[1]}) {
        field->setAcceptDrops(false);  // a file that is dropped here is an image, too
        connect(field, &QLineEdit::textEdited, this, [this] {
            presenter_.account(ui_.txtServer->text().toStdString(), ui_.txtAccount[0]->text().toStdString(),
                               ui_.txtAccount[1]->text().toStdString());
        });
    }
}

void frmCorvane::connectRun() {
    connect(ui_.cmdStartCheck, &QPushButton::clicked, this, [this] { startRun(false); });
    connect(ui_.cmdForceISP, &QPushButton::clicked, this, [this] { startRun(true); });
    connect(ui_.cmdCancel, &QPushButton::clicked, this, [this] { presenter_.cmdCancel_Click(); });
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, ui_.cmdCancel, &QPushButton::click);
    ui_.frameComport->onClick = [this](int index) { presenter_.cmdComport_Click(index); };
    ui_.frameComport->isScanned = [this](const std::string& port) {
        return updater_.serialPort().IsMyCommPort(port) || updater_.hidPort().IsMyCommPort(port);
    };
    ui_.frameComport->onRefused = [this](const std::string& port) { portRefused(port); };
    ui_.frameComport->onScan = [this](const std::vector<std::string>& ports) {
        ui_.device->setCurrentIndex(kDevicePorts);
        for (const auto& advice : updater_.advisor().beforeScan(ports)) say(QString::fromStdString(advice));
    };
    ui_.frameComport->onEnd = [this] { ui_.device->setCurrentIndex(kDeviceText); };
    connect(ui_.lstRefer, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { lstRefer_Click(item->data(Qt::UserRole).toInt()); });
    updater_.onReader = [this](const std::string& text) {
        if (presenter_.isBusy()) return;
        hints_.clear();
        say(QString::fromStdString(text));
    };
    questions_.localImage = [this](const FirmwareRecord& record) {
        return updater_.selection().localImage(record, platform_.digest);
    };
}

void frmCorvane::connectLog() {
    connect(ui_.cmdCopyLog, &QPushButton::clicked, this, [this] { ui_.txtInfo->copyAll(); });
    connect(ui_.cmdSaveLog, &QPushButton::clicked, this, [this] { saveLog(); });
    connect(ui_.mnuSaveLog, &QAction::triggered, this, [this] { saveLog(); });
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
    if (platform_.runtime.tick() - lastProgress_ >= kCalm) showProgress();
    QCoreApplication::processEvents(presenter_.isBusy() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    lastPump_ = platform_.runtime.tick();
}

void frmCorvane::startRun(bool force) {
    if (presenter_.isBusy()) return;
    questions_.renew();
    const auto outcome = presenter_.start(force);
    if (outcome.end == RunEnd::handedOver) return handOver();
    conclude(outcome);
    if (closesWhenFinished_) close();
}

void frmCorvane::conclude(const Outcome& outcome) {
    const auto verdict = presenter_.conclude(outcome);
    ui_.notice->say(noticeFor(verdict));
    const bool isUpdated = verdict.kind == Verdict::Kind::updated;
    ui_.txtVerdict->showVerdict(verdict, isUpdated ? QStringList() : hints_);
    clearHints();                                        // the card says what still matters
    showDevice(isUpdated ? RunFacts() : outcome.facts);  // ready for the next one
    const int devices = updater_.jobs().updatedDevices();
    if (devices > 0)
        ui_.labJobs->setText(devices == 1 ? tr("1 device updated") : tr("%1 devices updated").arg(devices));
    // What to press next.
    ui_.cmdStartCheck->setDefault(!verdict.callsForForce);
    ui_.cmdForceISP->setDefault(verdict.callsForForce);
    (verdict.callsForForce ? ui_.cmdForceISP : ui_.cmdStartCheck)->setFocus();
}

void frmCorvane::showDevice(const RunFacts& facts) {
    deviceVersion_ = facts.deviceVersion;
    showStep();
    ui_.labDevice->setText(facts.deviceVersion.empty()
                               ? tr("Connect one device. All serial ports and USB readers are searched for it.")
                               : fromDevice(facts.port + ": " + facts.deviceVersion));
}

void frmCorvane::showStep() { ui_.labFileStep->showText(fromDevice(presenter_.localStep(deviceVersion_))); }

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
    if (presenter_.isBusy()) {
        event->ignore();
        closesWhenFinished_ = true;
        if (presenter_.controls().cancel || questions_.isAskingAboutImage()) {
            presenter_.cmdCancel_Click();
            questions_.abandon();
        } else {
            say(tr("The window closes when the update has finished."));
        }
        return;
    }
    event->accept();
    if (hasEnded_) return;
    hasEnded_ = true;
    if (presenter_.unload()) return;
    QMessageBox box(QMessageBox::Warning, kProgramTitle, tr("The settings could not be saved."), QMessageBox::Ok, this);
    named(&box, "frmProblem");
    box.button(QMessageBox::Ok)->setObjectName("cmdOK");
    box.exec();
}

/// One file of this computer is an image to install.
void frmCorvane::dragEnterEvent(QDragEnterEvent* event) {
    const auto urls = event->mimeData()->urls();
    if (!presenter_.isBusy() && urls.size() == 1 && urls.front().isLocalFile()) event->acceptProposedAction();
}

void frmCorvane::dropEvent(QDropEvent* event) {
    if (presenter_.isBusy()) return;
    presenter_.optLine_Click(true);
    presenter_.loadFile(toPath(event->mimeData()->urls().front().toLocalFile()));
    event->acceptProposedAction();
}

void frmCorvane::running(bool isRunning) {
    if (isRunning) {
        clearHints();
        ui_.txtVerdict->hide();
        ui_.notice->say(noticeFor(RunPhase::login));
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
    refresh();
    (isRunning ? ui_.cmdCancel : ui_.cmdStartCheck)->setFocus();
}

void frmCorvane::cancellable(bool /*isCancellable*/) { refresh(); }

void frmCorvane::phase(RunPhase phase) {
    if (phase != RunPhase::idle) ui_.notice->say(noticeFor(phase));
    for (int i = 0; i < 3; ++i) ui_.steps[i]->setCurrent(i + 1 == stepOf(phase));
    if (phase == RunPhase::selection) showDevice(updater_.run().facts());
    meter_.phase(phase, platform_.runtime.tick());
    if (phase == RunPhase::program) {
        meter_.records(static_cast<std::int64_t>(updater_.run().facts().image.report().records));
    }
    progress(0, 0);
}

void frmCorvane::transferred(std::int64_t bytes, std::int64_t total) {
    meter_.transfer(bytes, total, platform_.runtime.tick());
}

/// Noted here and shown by the pump: a bar that is painted for each record costs more than sending one.
void frmCorvane::progress(std::int64_t value, std::int64_t maximum) {
    progress_ = {value, maximum};
    meter_.progress(value, maximum, platform_.runtime.tick());
    if (value == 0) showProgress();
}

void frmCorvane::showProgress() {
    constexpr std::int64_t kMost = 2000000000;  // no image comes near that
    lastProgress_ = platform_.runtime.tick();
    const auto [value, maximum] = progress_;
    // A maximum of 0 is how Qt says that something goes on.
    const auto shown = meter_.isUnmeasured() ? 0 : std::clamp<std::int64_t>(maximum, 1, kMost);
    ui_.pbProgram->setRange(0, static_cast<int>(shown));
    ui_.pbProgram->setTextVisible(value > 0);
    ui_.pbProgram->setFormat(QString::number(meter_.percent()) + " %");  // of records, as the line below says
    ui_.pbProgram->setValue(static_cast<int>(std::clamp<std::int64_t>(value, 0, kMost)));
    ui_.labPhase->setText(QString::fromStdString(meter_.text()));
    const auto title = QString::fromStdString(meter_.title());
    const auto program =
        options_.rehearsal.isEmpty() ? QString(kProgramTitle) : tr("%1 (rehearsal)").arg(kProgramTitle);
    setWindowTitle(title.isEmpty() ? program : tr("%1 - %2").arg(title, program));
}

void frmCorvane::links(const std::vector<ReferenceLink>& links) {
    ui_.lstRefer->clear();
    for (const auto& link : links) {
        auto* item = new QListWidgetItem(fromDevice(link.title), ui_.lstRefer);
        item->setData(Qt::UserRole, link.index);
        item->setToolTip(plainToolTip(item->text()));
        item->setForeground(palette().link());
        auto font = item->font();
        font.setUnderline(true);
        item->setFont(font);
    }
    constexpr int kRows = 4;
    const int rows = std::clamp(ui_.lstRefer->count(), 1, kRows);
    ui_.lstRefer->setFixedHeight(rows * ui_.lstRefer->sizeHintForRow(0) + 2 * ui_.lstRefer->frameWidth());
    ui_.references->setVisible(!links.empty());
}

void frmCorvane::advice(const std::string& text) { say(QString::fromStdString(text)); }

/// Adds to what the status bar says; only the last few lines stay there.
void frmCorvane::say(const QString& text) {
    constexpr qsizetype kShown = 3, kKept = 20;
    if (hints_.contains(text)) return;
    hints_.append(text);
    if (hints_.size() > kKept) hints_.removeFirst();
    ui_.labStatus->setText(hints_.mid(std::max<qsizetype>(0, hints_.size() - kShown)).join('\n'));
    ui_.labStatus->show();
}

void frmCorvane::clearHints() {
    hints_.clear();
    ui_.labStatus->clear();
    ui_.labStatus->hide();  // its room is the log's
}

void frmCorvane::portRefused(const std::string& port) {
    const auto reason = updater_.refusal(port);
    if (!reason.empty()) say(QString::fromStdString(reason));
}

void frmCorvane::refresh() {
    const auto& choices = presenter_.choices();
    const auto enabled = presenter_.controls();
    ui_.optLine[choices.offLine ? 1 : 0]->setChecked(true);
    (choices.useFile ? ui_.optFile : ui_.optLast)->setChecked(true);
    ui_.source->setCurrentIndex(choices.offLine ? kLocalPage : kSitePage);
    const auto fill = [](QLineEdit* field, const std::string& text) {
        const auto wanted = QString::fromStdString(text);
        if (field->text() != wanted) field->setText(wanted);
    };
    fill(ui_.txtServer, choices.server);
    fill(ui_.txtAccount[0], choices.userName);
    fill(ui_.txtAccount[1], choices.password);
    ui_.labFilePGM->showText(fromDevice(choices.programLabel()));
    const auto path = fromPath(choices.image.path());
    ui_.labFileName->showText(QFileInfo(path).fileName(), path);
    ui_.labFileVersion->showText(fromDevice(choices.image.info().version));
    ui_.labFileDate->showText(fromDevice(choices.image.info().date));
    ui_.picMemory->showMap(presenter_.localMap());
    showStep();

    QWidget* const choosing[] = {ui_.optLine[0],    ui_.optLine[1], ui_.cmdOption,  ui_.txtServer, ui_.txtAccount[0],
                                 ui_.txtAccount[1], ui_.cmdCopyLog, ui_.cmdSaveLog, menuBar()};
    for (auto* control : choosing) control->setEnabled(enabled.choices);
    ui_.mnuSaveLog->setEnabled(enabled.choices);  // its key works without the menu
    QWidget* const local[] = {ui_.optLast, ui_.optFile, ui_.cmdLoadFile, ui_.cmdRecent};
    for (auto* control : local) control->setEnabled(enabled.localFile);
    ui_.cmdStartCheck->setEnabled(enabled.start);
    ui_.cmdForceISP->setEnabled(enabled.start);
    ui_.cmdCancel->setEnabled(enabled.cancel);
}

/// The files as they are when the list opens; each has its number as a key.
void frmCorvane::fillRecent() {
    ui_.mnuRecent->clear();
    for (const auto& file : presenter_.recentFiles()) {
        const auto path = fromPath(file);
        const auto name = shortened(QFileInfo(path).fileName()), folder = shortened(QFileInfo(path).path());
        const auto number = ui_.mnuRecent->actions().size() + 1;
        auto* action =
            ui_.mnuRecent->addAction(QString("&%1 ").arg(number) + tr("%1 in %2").arg(name, folder).replace('&', "&&"),
                                     this, [this, file] { presenter_.loadFile(file); });
        action->setToolTip(plainToolTip(path));
    }
    if (ui_.mnuRecent->isEmpty()) ui_.mnuRecent->addAction(tr("No file has been chosen yet"))->setEnabled(false);
}

void frmCorvane::mnuRehearse_Click() {
    const auto problem = options_.rehearse();
    if (!problem.isEmpty()) say(tr("The rehearsal does not start: %1").arg(problem));
}

void frmCorvane::cmdOption_Click() { frmConnection(platform_.settings, this).exec(); }

void frmCorvane::lstRefer_Click(int index) {
    const auto address = presenter_.linkAddress(index);
    if (address.empty()) return;
    const auto problem = platform_.launcher.open(address);
    if (!problem.empty()) say(tr("The link could not be opened: %1").arg(QString::fromStdString(problem)));
}

std::optional<std::string> frmCorvane::pickFile() {
    // The operator reads the text before the patterns; some desktops tell "hex" from "HEX", so each case is listed.
    QFileDialog::Options options = QFileDialog::HideNameFilterDetails;
    options.setFlag(QFileDialog::DontUseNativeDialog, options_.usesQtDialogs);
    const auto filter = tr("Intel HEX (*.Hex)") + " (*.Hex *.hex *.HEX *.hEx *.heX *.HEx *.HeX *.hEX)";
    const auto path = QFileDialog::getOpenFileName(this, tr("Open Firmware File"), folder_, filter, nullptr, options);
    if (path.isEmpty()) return std::nullopt;
    folder_ = QFileInfo(path).path();
    return toPath(path);
}

void frmCorvane::saveLog() {
    const auto options = options_.usesQtDialogs ? QFileDialog::DontUseNativeDialog : QFileDialog::Options();
    const auto path =
        QFileDialog::getSaveFileName(this, tr("Save Log"), "corvane.log", tr("Text (*.log *.txt)"), nullptr, options);
    if (path.isEmpty()) return;
    const auto problem = ui_.txtInfo->save(path);
    if (!problem.isEmpty()) say(tr("The log could not be saved: %1").arg(problem));
}

}  // namespace corvane
