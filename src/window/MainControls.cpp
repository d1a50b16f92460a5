#include "window/MainControls.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>

#include "window/widgets/Naming.h"

namespace corvane {
namespace {

QString tr(const char* text) { return QObject::tr(text); }

/// A label for something that a device, a site or a file says.
QLabel* textLabel(const char* objectName, const QString& about) {
    auto* label = namedLabel(new QLabel, objectName, about);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

/// The same for one line, however long.
ElidedLabel* lineLabel(const char* objectName, const QString& about, Qt::TextElideMode mode = Qt::ElideRight) {
    auto* label = namedLabel(new ElidedLabel(mode), objectName, about);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* labelFor(const QString& text, QWidget* control) {
    auto* label = new QLabel(text);
    label->setBuddy(control);
    return label;
}

}  // namespace

MainControls::MainControls(QMainWindow& window) {
    makeMenu(window);
    auto* central = new QWidget;
    labRehearsal = textLabel("labRehearsal", tr("Rehearsal"));
    labRehearsal->setWordWrap(false);
    labRehearsal->setMargin(8);
    labRehearsal->setStyleSheet("QLabel { color: black; background: #ffd54f; border-radius: 4px; font-weight: bold; }");
    labRehearsal->hide();
    notice = new NoticeStrip;

    auto* left = new QVBoxLayout;
    left->addWidget(makeSource());
    left->addWidget(makeDevice());
    left->addWidget(makeUpdate());
    left->addStretch(1);  // else a high window stretches the steps
    auto* right = new QVBoxLayout;
    txtVerdict = new VerdictCard;
    right->addWidget(txtVerdict);
    right->addWidget(makeLog(), 1);
    labStatus = textLabel("labStatus", tr("Advice"));
    labStatus->hide();
    right->addWidget(labStatus);  // the log makes room for it, the steps could not
    right->addWidget(makeReferences());
    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 2);
    columns->addLayout(right, 3);

    auto* head = new QHBoxLayout;
    head->addWidget(labRehearsal);
    head->addWidget(notice, 1);
    auto* layout = new QVBoxLayout(central);
    layout->addLayout(head);
    layout->addLayout(columns, 1);
    layout->addWidget(makeStatus());
    window.setCentralWidget(central);
    setTabOrder();
}

void MainControls::makeMenu(QMainWindow& window) {
    auto* file = window.menuBar()->addMenu(tr("&File"));
    mnuSaveLog = file->addAction(tr("&Save log…"));
    mnuSaveLog->setObjectName("mnuSaveLog");
    mnuSaveLog->setShortcut(QKeySequence::Save);
    mnuJobs = file->addAction(tr("Last &jobs…"));
    mnuJobs->setObjectName("mnuJobs");
    file->addSeparator();
    mnuQuit = file->addAction(tr("&Quit"));
    mnuQuit->setObjectName("mnuQuit");
    mnuQuit->setShortcut(QKeySequence::Quit);
    mnuRehearse = window.menuBar()->addMenu(tr("&Help"))->addAction(tr("&Rehearse an update…"));
    mnuRehearse->setObjectName("mnuRehearse");
}

QWidget* MainControls::makeSource() {
    steps[0] = new StepBox(1, tr("What to install"));
    optLine[0] =
        named(new QRadioButton(tr("O&n Line")), "optLine0", tr("On Line"), tr("Images come from the maker's site"));
    optLine[1] =
        named(new QRadioButton(tr("Off L&ine")), "optLine1", tr("Off Line"), tr("Images come from this computer"));
    cmdOption = named(new QPushButton(tr("&Options…")), "cmdOption", tr("Options"), tr("How the site is reached"));
    auto* lines = new QButtonGroup(steps[0]);
    auto* mode = new QHBoxLayout;
    for (auto* button : optLine) {
        lines->addButton(button);
        mode->addWidget(button);
    }
    mode->addStretch();
    mode->addWidget(cmdOption);
    source = new QStackedWidget;
    source->addWidget(makeSitePage());
    source->addWidget(makeLocalPage());
    steps[0]->body()->addLayout(mode);
    steps[0]->body()->addWidget(source);
    return steps[0];
}

QWidget* MainControls::makeSitePage() {
    auto* page = new QWidget;
    txtServer = named(new QLineEdit, "txtServer", tr("Server"), tr("The maker's FTP host"));
    txtAccount[0] = named(new QLineEdit, "txtAccount0", tr("User name"));
    txtAccount[1] = named(new QLineEdit, "txtAccount1", tr("Password"));
    txtAccount[1]->setEchoMode(QLineEdit::Password);
    auto* form = new QFormLayout(page);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("Ser&ver"), txtServer);
    form->addRow(tr("&User name"), txtAccount[0]);
    form->addRow(tr("&Password"), txtAccount[1]);
    return page;
}

QWidget* MainControls::makeLocalPage() {
    auto* page = new QWidget;
    optLast = named(new QRadioButton(tr("&Download folder")), "optLast", tr("Download folder"),
                    tr("Offers the images that were downloaded before"));
    optFile =
        named(new QRadioButton(tr("Loc&al file")), "optFile", tr("Local file"), tr("Installs one Intel HEX file"));
    cmdLoadFile =
        named(new QPushButton(tr("Choos&e file…")), "cmdLoadFile", tr("Choose file"), tr("Picks an Intel HEX file"));
    cmdRecent = named(new QPushButton(tr("Recen&t")), "cmdRecent", tr("Recent files"),
                      tr("Takes one of the files that were chosen last"));
    mnuRecent = new QMenu(cmdRecent);
    mnuRecent->setObjectName("mnuRecent");
    mnuRecent->setToolTipsVisible(true);
    cmdRecent->setMenu(mnuRecent);
    auto* images = new QButtonGroup(page);
    images->addButton(optLast);
    images->addButton(optFile);
    auto* choice = new QHBoxLayout;
    choice->addWidget(optFile);
    choice->addStretch();
    choice->addWidget(cmdLoadFile);
    choice->addWidget(cmdRecent);

    picMemory = new MemoryView;
    constexpr int kClose = 4;  // pixels
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kClose);
    layout->addWidget(optLast);
    layout->addLayout(choice);
    layout->addLayout(makeFileLabels());
    layout->addWidget(labFileStep);
    layout->addWidget(picMemory);
    layout->addStretch();
    return page;
}

QLayout* MainControls::makeFileLabels() {
    labFileName = lineLabel("labFileName", tr("Name of the local file"), Qt::ElideMiddle);
    labFilePGM = lineLabel("labFilePGM", tr("Program of the local file"));
    labFileVersion = lineLabel("labFileVersion", tr("Version of the local file"));
    labFileDate = lineLabel("labFileDate", tr("Date of the local file"));
    labFileStep = lineLabel("labFileStep", tr("Step from the device's version to the local file's"));
    constexpr int kApart = 8;  // pixels
    auto* version = new QHBoxLayout;
    version->setSpacing(kApart);
    version->addWidget(labFileVersion, 1);
    version->addWidget(new QLabel(tr("Date")));
    version->addWidget(labFileDate, 1);
    auto* form = new QFormLayout;
    form->setHorizontalSpacing(kApart);
    form->addRow(tr("File"), labFileName);
    form->addRow(tr("Program"), labFilePGM);
    form->addRow(tr("Version"), version);
    return form;
}

QWidget* MainControls::makeDevice() {
    steps[1] = new StepBox(2, tr("Which device"));
    labDevice = textLabel("labDevice", tr("Device"));
    labDevice->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    frameComport = new PortFrame;
    device = new QStackedWidget;  // both pages take the same room, so that nothing moves when a scan begins
    device->addWidget(labDevice);
    device->addWidget(frameComport);
    steps[1]->body()->addWidget(device);
    return steps[1];
}

QWidget* MainControls::makeUpdate() {
    steps[2] = new StepBox(3, tr("Update"));
    cmdStartCheck = named(new QPushButton(tr("&Start update")), "cmdStartCheck", tr("Start update"),
                          tr("Finds the device, offers the images for it and installs one"));
    cmdStartCheck->setDefault(true);
    cmdForceISP = named(new QPushButton(tr("Fo&rce ISP")), "cmdForceISP", tr("Force ISP"),
                        tr("Rescues a device that sits in its boot loader: takes it, and offers every image"));
    cmdCancel = named(new QPushButton(tr("&Cancel")), "cmdCancel", tr("Cancel"),
                      tr("Ends the run; possible as long as nothing on the device has changed"));
    auto font = cmdStartCheck->font();
    font.setBold(true);
    cmdStartCheck->setFont(font);
    pbProgram = named(new QProgressBar, "pbProgram", tr("Progress"));
    labPhase = textLabel("labPhase", tr("What the run does"));
    labPhase->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    labPhase->setMinimumHeight(2 * labPhase->fontMetrics().lineSpacing());  // so that nothing moves with its length

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdStartCheck, 1);
    buttons->addWidget(cmdForceISP);
    buttons->addWidget(cmdCancel);
    steps[2]->body()->addLayout(buttons);
    steps[2]->body()->addWidget(pbProgram);
    steps[2]->body()->addWidget(labPhase);
    return steps[2];
}

QWidget* MainControls::makeLog() {
    auto* box = new QWidget;
    txtInfo = new LogPane;
    cmdCopyLog =
        named(new QPushButton(tr("Cop&y log")), "cmdCopyLog", tr("Copy log"), tr("Puts the log on the clipboard"));
    cmdSaveLog = named(new QPushButton(tr("Save lo&g…")), "cmdSaveLog", tr("Save log"), tr("Writes the log to a file"));
    auto* head = new QHBoxLayout;
    head->addWidget(labelFor(tr("&Log"), txtInfo), 1);
    head->addWidget(cmdCopyLog);
    head->addWidget(cmdSaveLog);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(head);
    layout->addWidget(txtInfo, 1);
    return box;
}

QWidget* MainControls::makeReferences() {
    references = new QWidget;
    lstRefer = named(new QListWidget, "lstRefer", tr("Reference links"), tr("Documents about the installed firmware"));
    // Else some styles activate a link at a click and others at a second one.
    lstRefer->setStyleSheet("QListWidget { activate-on-singleclick: 1; }");
    lstRefer->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    lstRefer->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lstRefer->setTextElideMode(Qt::ElideRight);
    auto* layout = new QVBoxLayout(references);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(labelFor(tr("Reference lin&ks"), lstRefer));
    layout->addWidget(lstRefer);
    references->hide();
    return references;
}

QWidget* MainControls::makeStatus() {
    auto* bar = named(new QWidget, "statusBar");
    labVersion = textLabel("labVersion", tr("Program version"));
    labVersion->setWordWrap(false);
    labJobs = textLabel("labJobs", tr("Devices updated since the start"));
    labJobs->setWordWrap(false);
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    layout->addWidget(labJobs);
    layout->addWidget(labVersion);
    return bar;
}

void MainControls::setTabOrder() {
    QWidget* const order[] = {optLine[0],
                              optLine[1],
                              cmdOption,
                              txtServer,
                              txtAccount[0],
                              txtAccount[1],
                              optLast,
                              optFile,
                              cmdLoadFile,
                              cmdRecent,
                              frameComport->cmdMovePanel(),
                              cmdStartCheck,
                              cmdForceISP,
                              cmdCancel,
                              txtVerdict,
                              txtInfo,
                              cmdCopyLog,
                              cmdSaveLog,
                              lstRefer};
    for (std::size_t i = 0; i + 1 < std::size(order); ++i) QWidget::setTabOrder(order[i], order[i + 1]);
}

}  // namespace corvane
