#include "window/SourceControls.h"

#include <QButtonGroup>
#include <QFileInfo>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"
#include "window/widgets/Tones.h"

namespace corvane {
namespace {

QString tr(const char* text) { return QObject::tr(text); }

/// The same for one line, however long.
ElidedLabel* lineLabel(const char* objectName, const QString& about, Qt::TextElideMode mode = Qt::ElideRight) {
    auto* label = namedLabel(new ElidedLabel(mode), objectName, about);
    label->setTextFormat(Qt::PlainText);
    return label;
}

/// What stands there already keeps its cursor.
void showIn(QLineEdit* field, const std::string& text) {
    const auto wanted = QString::fromStdString(text);
    if (field->text() != wanted) field->setText(wanted);
}

/// A place with a dashed edge, as places look onto which something can be dropped.
class DropTarget : public QWidget {
protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(lineColour(palette()), 1.5, Qt::DashLine));
        painter.setBrush(mixed(palette().color(QPalette::Window), palette().color(QPalette::Base), 0.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 8, 8);
    }
};

/// A long name with its middle left out.
QString shortened(const QString& name) {
    constexpr qsizetype kEnd = 18;
    return name.size() <= 2 * kEnd + 1 ? name : name.left(kEnd) + "\u2026" + name.right(kEnd);
}

}  // namespace

class WalkedButton : public QRadioButton {
public:
    using QRadioButton::QRadioButton;
    bool isWalking = false;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        isWalking = event->key() != Qt::Key_Space && event->key() != Qt::Key_Select;
        QRadioButton::keyPressEvent(event);
        isWalking = false;
    }
};

bool SourceControls::isWalking() const { return walked_[0]->isWalking || walked_[1]->isWalking; }

SourceControls::SourceControls() {
    box = new QWidget;
    optLine[0] =
        named(new QRadioButton(tr("O&n Line")), "optLine0", tr("On Line"), tr("Images come from the maker's site"));
    optLine[1] =
        named(new QRadioButton(tr("Off L&ine")), "optLine1", tr("Off Line"), tr("Images come from this computer"));
    cmdOption = named(new QPushButton(tr("&Options…")), "cmdOption", tr("Options"), tr("How the site is reached"));
    auto* lines = new QButtonGroup(box);
    auto* mode = new QHBoxLayout;
    for (auto* button : optLine) {
        lines->addButton(button);
        mode->addWidget(button);
    }
    mode->addStretch();
    mode->addWidget(cmdOption);
    makeSitePage();
    makeLocalPage();
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(mode);
    layout->addWidget(sitePage);
    layout->addWidget(localPage);
}

void SourceControls::makeSitePage() {
    sitePage = new QWidget;
    txtServer = named(new QLineEdit, "txtServer", tr("Server"), tr("The maker's FTP host"));
    txtAccount[0] = named(new QLineEdit, "txtAccount0", tr("User name"));
    txtAccount[1] = named(new QLineEdit, "txtAccount1", tr("Password"));
    txtAccount[1]->setEchoMode(QLineEdit::Password);
    auto* form = new QFormLayout(sitePage);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("Ser&ver"), txtServer);
    form->addRow(tr("&User name"), txtAccount[0]);
    form->addRow(tr("&Password"), txtAccount[1]);
}

void SourceControls::makeLocalPage() {
    localPage = new QWidget;
    for (auto*& button : walked_) button = new WalkedButton;
    optLast = named(walked_[0], "optLast", tr("Download folder"), tr("Offers the images that were downloaded before"));
    optLast->setText(tr("&Download folder"));
    optFile = named(walked_[1], "optFile", tr("Local file"), tr("Installs one Intel HEX file"));
    optFile->setText(tr("Loc&al file"));
    cmdLoadFile =
        named(new QPushButton(tr("Choos&e file…")), "cmdLoadFile", tr("Choose file"), tr("Picks an Intel HEX file"));
    cmdRecent = named(new QPushButton(tr("Recen&t")), "cmdRecent", tr("Recent files"),
                      tr("Takes one of the files that were chosen last"));
    mnuRecent = new QMenu(cmdRecent);
    mnuRecent->setObjectName("mnuRecent");
    mnuRecent->setToolTipsVisible(true);
    cmdRecent->setMenu(mnuRecent);
    auto* images = new QButtonGroup(localPage);
    images->addButton(optLast);
    images->addButton(optFile);
    auto* choice = new QHBoxLayout;
    choice->addWidget(optLast);
    choice->addWidget(optFile);
    choice->addStretch();
    choice->addWidget(cmdLoadFile);
    choice->addWidget(cmdRecent);
    auto* layout = new QVBoxLayout(localPage);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(choice);
    layout->addWidget(makeDropTarget());
}

void SourceControls::show(const Choices& choices, const std::string& step) {
    optLine[choices.offLine ? 1 : 0]->setChecked(true);
    (choices.useFile ? optFile : optLast)->setChecked(true);
    sitePage->setVisible(!choices.offLine);
    localPage->setVisible(choices.offLine);
    showIn(txtServer, choices.server);
    showIn(txtAccount[0], choices.userName);
    showIn(txtAccount[1], choices.password);
    labFilePGM->showText(fromDevice(choices.programLabel()));
    const auto path = fromPath(choices.image.path());
    labFileName->showText(path.isEmpty() ? tr("Drop an Intel HEX file here") : QFileInfo(path).fileName(), path);
    labFileVersion->showText(fromDevice(choices.image.info().version));
    labFileDate->showText(fromDevice(choices.image.info().date));
    labFileStep->showText(fromDevice(step));
}

QWidget* SourceControls::makeDropTarget() {
    labFileName = lineLabel("labFileName", tr("Name of the local file"), Qt::ElideMiddle);
    labFilePGM = lineLabel("labFilePGM", tr("Program of the local file"));
    labFileVersion = lineLabel("labFileVersion", tr("Version of the local file"));
    labFileDate = lineLabel("labFileDate", tr("Date of the local file"));
    labFileStep = lineLabel("labFileStep", tr("Step from the device's version to the local file's"));
    dropTarget = new DropTarget;
    auto* form = new QFormLayout(dropTarget);
    form->setContentsMargins(12, 10, 12, 10);
    form->setVerticalSpacing(3);
    auto* version = new QHBoxLayout;
    version->setSpacing(8);
    version->addWidget(labFileVersion, 1);
    version->addWidget(new QLabel(tr("Date")));
    version->addWidget(labFileDate, 1);
    form->addRow(tr("File"), labFileName);
    form->addRow(tr("Program"), labFilePGM);
    form->addRow(tr("Version"), version);
    form->addRow(labFileStep);
    return dropTarget;
}

void SourceControls::fillRecent(const std::vector<std::string>& files,
                                const std::function<void(const std::string& file)>& load) {
    mnuRecent->clear();
    for (const auto& file : files) {
        const auto path = fromPath(file);
        const auto name = shortened(QFileInfo(path).fileName()), folder = shortened(QFileInfo(path).path());
        const auto number = mnuRecent->actions().size() + 1;
        auto* action = mnuRecent->addAction(
            QString("&%1 ").arg(number) + QObject::tr("%1 in %2").arg(name, folder).replace('&', "&&"), mnuRecent,
            [load, file] { load(file); });
        action->setToolTip(plainToolTip(path));
    }
    if (mnuRecent->isEmpty()) mnuRecent->addAction(QObject::tr("No file has been chosen yet"))->setEnabled(false);
}

}  // namespace corvane
