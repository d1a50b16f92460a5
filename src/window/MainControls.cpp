#include "window/MainControls.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QStyle>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "platform/ProgramInfo.h"
#include "window/widgets/Naming.h"
#include "window/widgets/Tones.h"

namespace corvane {
namespace {

constexpr int kGrid = 8;            // pixels; every distance is a multiple of it
constexpr int kWidestColumn = 760;  // pixels: longer lines are hard to read

QString tr(const char* text) { return QObject::tr(text); }

/// A label for something that a device, a site or a file says.
QLabel* textLabel(const char* objectName, const QString& about) {
    auto* label = namedLabel(new QLabel, objectName, about);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QLabel* headingFor(const QString& text, QWidget* control = nullptr) {
    auto* label = new QLabel(text);
    auto font = label->font();
    font.setBold(true);
    label->setFont(font);
    label->setBuddy(control);
    return label;
}

/// A box without a frame, with a heading.
QVBoxLayout* section(QWidget* box, QLabel* heading) {
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kGrid / 2);
    layout->addWidget(heading);
    box->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    return layout;
}

/// No wider than people like to read, however wide the window is.
void placeInTheMiddle(QWidget& owner, QWidget* part) {
    part->setMaximumWidth(kWidestColumn);
    auto* layout = new QHBoxLayout(&owner);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch(1);
    layout->addWidget(part, 1000);
    layout->addStretch(1);
}

}  // namespace

MainControls::MainControls(QMainWindow& window) {
    makeMenu(window);
    labRehearsal = textLabel("labRehearsal", tr("Rehearsal"));
    labRehearsal->setAlignment(Qt::AlignCenter);
    labRehearsal->setMargin(kGrid / 2);
    labRehearsal->setStyleSheet("QLabel { color: black; background: #ffd54f; border-radius: 4px; font-weight: bold; }");
    labRehearsal->hide();
    picLink = new LinkPicture;
    labDevice = textLabel("labDevice", tr("Device"));
    labDevice->setAlignment(Qt::AlignCenter);
    makeCard();
    makeChoices();
    makeDevices();
    makeReferences();
    makeDetails();

    auto* inner = new QWidget;
    auto* layout = new QVBoxLayout(inner);
    layout->setContentsMargins(2 * kGrid, kGrid, 2 * kGrid, kGrid);
    layout->setSpacing(kGrid);
    for (QWidget* part : {static_cast<QWidget*>(labRehearsal), static_cast<QWidget*>(picLink),
                          static_cast<QWidget*>(labDevice), static_cast<QWidget*>(card), choices,
                          static_cast<QWidget*>(chkSeries), devices, references, static_cast<QWidget*>(cmdDetails)})
        layout->addWidget(part);
    layout->setAlignment(cmdDetails, Qt::AlignLeft);
    layout->addWidget(details, 1);
    layout->addStretch();

    auto* middle = new QWidget;
    placeInTheMiddle(*middle, inner);
    column = new QScrollArea;
    column->setObjectName("frameColumn");
    column->setWidget(middle);
    column->setWidgetResizable(true);
    column->setFrameShape(QFrame::NoFrame);
    column->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column->setFocusPolicy(Qt::NoFocus);

    auto* central = new QWidget;
    auto* whole = new QVBoxLayout(central);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(column, 1);
    whole->addWidget(makeButtons());
    window.setCentralWidget(central);
    setTabOrder();
}

void MainControls::makeMenu(QMainWindow& window) {
    menu = window.menuBar();
    auto* file = window.menuBar()->addMenu(tr("&File"));
    mnuSaveLog = file->addAction(tr("&Save log…"));
    mnuSaveLog->setObjectName("mnuSaveLog");
    mnuSaveLog->setShortcut(QKeySequence::Save);
    mnuSaveReport = file->addAction(tr("Save &report of the last run…"));
    mnuSaveReport->setObjectName("mnuSaveReport");
    mnuJobs = file->addAction(tr("Last &jobs…"));
    mnuJobs->setObjectName("mnuJobs");
    file->addSeparator();
    mnuQuit = file->addAction(tr("&Quit"));
    mnuQuit->setObjectName("mnuQuit");
    mnuQuit->setShortcut(QKeySequence::Quit);
    auto* help = window.menuBar()->addMenu(tr("&Help"));
    mnuManual = help->addAction(tr("&Manual"));
    mnuManual->setObjectName("mnuManual");
    mnuManual->setShortcut(QKeySequence::HelpContents);
    mnuRehearse = help->addAction(tr("&Rehearse an update…"));
    mnuRehearse->setObjectName("mnuRehearse");
    help->addSeparator();
    mnuAbout = help->addAction(tr("&About %1").arg(kProgramTitle));
    mnuAbout->setObjectName("mnuAbout");
}

void MainControls::makeCard() {
    card = new CardView;
    pbProgram = named(new QProgressBar, "pbProgram", tr("Progress"), tr("How much of the whole update is done"));
    pbProgram->setRange(0, 1000);
    pbProgram->hide();
    labPhase = textLabel("labPhase", tr("What the run does"));
    labStatus = textLabel("labStatus", tr("Advice"));
    labPhase->hide();
    labStatus->hide();
    card->body()->addWidget(pbProgram);
    card->body()->addWidget(labPhase);
    card->body()->addWidget(labStatus);
    cmdForget = new ForgetButton;
    cmdReport = named(new QPushButton(tr("Save report…")), "cmdReport", tr("Save report"),
                      tr("One file with all that happened, for whoever has to find the cause"));
    auto* more = new QHBoxLayout;
    more->addWidget(cmdForget);
    more->addWidget(cmdReport);
    more->addStretch();
    card->body()->addLayout(more);
}

void MainControls::makeChoices() {
    choices = new QWidget;
    section(choices, headingFor(tr("What to install")))->addWidget(source.box);
    chkSeries =
        named(new QCheckBox(tr("Then the next one (&many of one kind)")), "chkSeries", tr("Then the next one"),
              tr("After a device is updated: waits for the next one on its port, and updates that in the same way"));
}

void MainControls::makeDevices() {
    devices = new QWidget;
    lstPorts = new PortsView;
    frameComport = new PortFrame;
    frameComport->hide();
    auto* layout = section(devices, headingFor(tr("Ports and readers")));
    layout->addWidget(lstPorts);
    layout->addWidget(frameComport);
}

void MainControls::showScan(bool isScanning) {
    devices->setVisible(isScanning);
    frameComport->setVisible(isScanning);
    lstPorts->setVisible(!isScanning);
}

void MainControls::makeReferences() {
    references = new QWidget;
    lstRefer = new ReferenceList;
    section(references, headingFor(tr("Reference lin&ks"), lstRefer))->addWidget(lstRefer);
    references->hide();
}

void MainControls::makeDetails() {
    cmdDetails = named(new QPushButton(tr("Detai&ls")), "cmdDetails", tr("Details"),
                       tr("Shows the log, numbers and digests, or puts them away"));
    cmdDetails->setCheckable(true);
    labFacts = textLabel("labFacts", tr("Numbers of the last run"));
    labFacts->hide();
    picMemory = new MemoryView;
    txtInfo = new LogPane;
    txtInfo->setMinimumHeight(10 * txtInfo->fontMetrics().lineSpacing());
    cmdCopyLog =
        named(new QPushButton(tr("Cop&y log")), "cmdCopyLog", tr("Copy log"), tr("Puts the log on the clipboard"));
    cmdSaveLog = named(new QPushButton(tr("Save lo&g…")), "cmdSaveLog", tr("Save log"), tr("Writes the log to a file"));
    auto* head = new QHBoxLayout;
    head->addWidget(headingFor(tr("Log")), 1);
    head->addWidget(cmdCopyLog);
    head->addWidget(cmdSaveLog);
    details = new QWidget;
    details->setObjectName("frameDetails");
    auto* layout = new QVBoxLayout(details);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(labFacts);
    layout->addWidget(picMemory);
    layout->addLayout(head);
    layout->addWidget(txtInfo, 1);
    details->hide();
    QObject::connect(cmdDetails, &QPushButton::toggled, details, [this](bool isOn) {
        details->setVisible(isOn);
        cmdDetails->setText((isOn ? "\u25be  " : "\u25b8  ") + tr("Detai&ls"));
    });
    cmdDetails->toggled(false);
}

QWidget* MainControls::makeButtons() {
    cmdStartCheck =
        named(new QPushButton, "cmdStartCheck", {}, tr("Finds the device, offers the images for it and installs one"));
    cmdForceISP = named(new QPushButton, "cmdForceISP", {},
                        tr("Rescues a device that sits in its boot loader: takes it, and offers every image"));
    cmdCancel = named(new QPushButton(tr("&Cancel")), "cmdCancel", tr("Cancel"),
                      tr("Ends the run; possible as long as nothing on the device has changed"));
    labVersion = textLabel("labVersion", tr("Program version"));
    labJobs = textLabel("labJobs", tr("Devices updated since the start"));
    for (auto* label : {labVersion, labJobs}) label->setWordWrap(false);
    cmdCancel->hide();
    auto* bar = named(new QFrame, "frameButtons");
    bar->setFrameShape(QFrame::StyledPanel);
    auto* row = new QWidget;
    placeInTheMiddle(*bar, row);
    buttons_ = new QHBoxLayout(row);
    buttons_->setContentsMargins(2 * kGrid, kGrid, 2 * kGrid, kGrid);
    buttons_->addWidget(labVersion);
    buttons_->addWidget(labJobs);
    buttons_->addStretch();
    buttons_->addWidget(cmdForceISP);
    buttons_->addWidget(cmdCancel);
    buttons_->addWidget(cmdStartCheck);
    return bar;
}

/// Styles draw the rings of radio buttons and the marks of a button that cannot be pressed from the window's colour
/// alone, and on a dark one they vanish.
void MainControls::applyPalette(QWidget& window) {
    const auto line = lineColour(window.palette()).name();
    window.setStyleSheet(
        QString("QRadioButton::indicator { width: 11px; height: 11px; border: 2px solid %1; border-radius: 7px;"
                " background: palette(base); }"
                "QRadioButton::indicator:checked { border-color: palette(highlight); background: qradialgradient("
                "cx: 0.5, cy: 0.5, radius: 0.5, fx: 0.5, fy: 0.5, stop: 0 palette(highlight), stop: 0.55"
                " palette(highlight), stop: 0.65 palette(base), stop: 1 palette(base)); }"
                "QRadioButton:focus, QCheckBox:focus { text-decoration: underline; font-weight: bold; }"
                "QPushButton#cmdDetails { border: none; padding: 4px 2px; text-align: left; }"
                "QPushButton#cmdDetails:focus { text-decoration: underline; font-weight: bold; }"
                "QListWidget#lstPorts { background: transparent; }"
                "QFrame#frameButtons QPushButton:default { background: palette(highlight); color: "
                "palette(highlighted-text);"
                " border: 2px solid palette(highlight); border-radius: 6px; padding: 7px 20px; }"
                "QFrame#frameButtons QPushButton:default:focus { border-color: palette(window-text); }"
                "QFrame#frameButtons QPushButton:default:disabled { background: palette(button); color: %1; "
                "border-color: %1; }")
            .arg(line));
}

void MainControls::enable(const Controls& controls, bool hasReport) {
    QWidget* const choosing[] = {source.optLine[0], source.optLine[1],    source.cmdOption,
                                 source.txtServer,  source.txtAccount[0], source.txtAccount[1],
                                 cmdCopyLog,        cmdSaveLog,           menu};
    for (auto* control : choosing) control->setEnabled(controls.choices);
    for (auto* action : {mnuSaveLog, mnuManual}) action->setEnabled(controls.choices);  // their keys need no menu
    mnuSaveReport->setEnabled(controls.choices && hasReport);
    QWidget* const local[] = {source.optLast, source.optFile, source.cmdLoadFile, source.cmdRecent};
    for (auto* control : local) control->setEnabled(controls.localFile);
    cmdStartCheck->setEnabled(controls.start);
    cmdForceISP->setEnabled(controls.start);
    cmdCancel->setEnabled(controls.cancel);
}

void MainControls::emphasize(bool force) {
    auto* large = force ? cmdForceISP : cmdStartCheck;
    auto* small = force ? cmdStartCheck : cmdForceISP;
    if (large->isDefault()) return;
    small->setDefault(false);
    large->setDefault(true);
    auto font = small->font();
    font.setBold(false);
    small->setFont(font);
    font.setBold(true);
    large->setFont(font);
    for (auto* button : {small, large}) button->style()->polish(button);  // the default one looks another way
    buttons_->removeWidget(large);
    buttons_->addWidget(large);
    buttons_->removeWidget(small);
    buttons_->insertWidget(buttons_->indexOf(cmdCancel), small);
    QWidget::setTabOrder(small, cmdCancel);
    QWidget::setTabOrder(cmdCancel, large);
}

void MainControls::setTabOrder() {
    QWidget* const order[] = {card->findChild<QLabel*>("labNotice"),
                              card->text(),
                              cmdForget,
                              cmdReport,
                              source.optLine[0],
                              source.optLine[1],
                              source.cmdOption,
                              source.txtServer,
                              source.txtAccount[0],
                              source.txtAccount[1],
                              source.optLast,
                              source.optFile,
                              source.cmdLoadFile,
                              source.cmdRecent,
                              chkSeries,
                              lstPorts,
                              frameComport->cmdMovePanel(),
                              lstRefer,
                              cmdDetails,
                              cmdCopyLog,
                              cmdSaveLog,
                              txtInfo,
                              cmdForceISP,
                              cmdCancel,
                              cmdStartCheck};
    for (std::size_t i = 0; i + 1 < std::size(order); ++i) QWidget::setTabOrder(order[i], order[i + 1]);
}

}  // namespace corvane
