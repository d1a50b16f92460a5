#include "window/dialogs/frmQuery.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStringListModel>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

/// Lists longer than this get a field to search them.
constexpr int kShortList = 12;

}  // namespace

frmQuery::frmQuery(FirmwareDialog& dialog, OperatorPrompts& prompts, LocalImage localImage, QWidget* owner)
    : QDialog(owner), dialog_(dialog), prompts_(prompts), localImage_(std::move(localImage)) {
    named(this, "frmQuery");
    setWindowTitle(tr("Select Firmware"));
    arrange();
    makeList();
    connect(cboROMs_, &QComboBox::currentIndexChanged, this, [this] { cboROMs_Click(); });
    connect(txtFind_, &QLineEdit::textChanged, this, [this](const QString& text) { find(text); });
    connect(cmdOK_, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    showSelected();
    cboROMs_->setFocus();
}

void frmQuery::arrange() {
    const auto fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    auto* labDevice = namedLabel(new QLabel(fromDevice(dialog_.header()).trimmed()), "labDevice", tr("Device"));
    labDevice->setTextFormat(Qt::PlainText);
    labDevice->setFont(fixed);
    labDevice->setWordWrap(true);
    labDevice->setTextInteractionFlags(Qt::TextSelectableByMouse);

    txtFind_ = named(new QLineEdit, "txtFind", tr("Find"), tr("Lists only the images whose entry holds this text"));
    txtFind_->setClearButtonEnabled(true);
    cboROMs_ =
        named(new QComboBox, "cboROMs", tr("Image"), tr("The images on offer; \"*\" marks those for another product"));
    cboROMs_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboROMs_->setMinimumContentsLength(30);
    txtCheckVersion_ =
        named(new QLineEdit, "txtCheckVersion", tr("Comparison"), tr("How the image compares with the device"));
    txtCheckVersion_->setReadOnly(true);
    txtCheckVersion_->setFrame(false);
    txtView_ = named(new QPlainTextEdit, "txtView", tr("Details of the image"));
    txtView_->setReadOnly(true);
    txtView_->setTabChangesFocus(true);
    txtView_->setFont(fixed);

    labStep_ = namedLabel(new QLabel, "labStep", tr("Step from the device's version to the image's"));
    labStep_->setTextFormat(Qt::PlainText);
    labStep_->setWordWrap(true);
    labStep_->setIndent(2);  // as the field above it
    labMemory_ = named(new ElidedLabel(Qt::ElideMiddle), "labMemory");
    labMemory_->setTextFormat(Qt::PlainText);
    picMemory_ = new MemoryView;

    auto* fields = new QFormLayout;
    fields->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const bool isLong = dialog_.entries().size() > kShortList;
    if (isLong)
        fields->addRow(tr("&Find"), txtFind_);
    else
        txtFind_->setParent(this), txtFind_->hide();
    fields->addRow(tr("&Image"), cboROMs_);
    fields->addRow(tr("C&omparison"), txtCheckVersion_);
    fields->addRow(tr("Step"), labStep_);

    auto* buttons = new QDialogButtonBox;
    cmdOK_ =
        named(new QPushButton(tr("&Update…")), "cmdOK", tr("Update"), tr("Asks once more, then installs this image"));
    auto* cmdCancel =
        named(new QPushButton(tr("&Cancel")), "cmdCancel", tr("Cancel"), tr("Leaves the device as it is"));
    buttons->addButton(cmdOK_, QDialogButtonBox::ActionRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    cmdOK_->setDefault(true);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(labDevice);
    layout->addLayout(fields);
    layout->addWidget(txtView_, 1);
    layout->addWidget(labMemory_);
    layout->addWidget(picMemory_);
    layout->addWidget(buttons);
    resize(560, 440);
}

void frmQuery::makeList() {
    listed_ = new QStringListModel(this);
    auto* view = new QListView;
    view->setUniformItemSizes(true);  // else thousands of entries are measured one by one
    cboROMs_->setView(view);
    cboROMs_->setModel(listed_);
    list();
}

void frmQuery::list() {
    const QSignalBlocker blocker(cboROMs_);  // the list changes here, the operator chooses nothing
    QStringList texts;
    for (const int entry : dialog_.found())
        texts.append(fromDevice(dialog_.entries()[static_cast<std::size_t>(entry)].text));
    listed_->setStringList(texts);
    cboROMs_->setPlaceholderText(texts.isEmpty() ? tr("No image is called like that") : tr("Choose the image"));
    cboROMs_->setCurrentIndex(dialog_.selectedPlace());
}

void frmQuery::find(const QString& text) {
    dialog_.find(toDevice(text));
    list();
    showSelected();
}

void frmQuery::cboROMs_Click() {
    const int place = cboROMs_->currentIndex();
    dialog_.select(place < 0 ? -1 : dialog_.found()[static_cast<std::size_t>(place)]);
    showSelected();
}

void frmQuery::cmdOK_Click() {
    dialog_.ok(prompts_);
    if (dialog_.isChosen()) accept();
}

void frmQuery::showSelected() {
    const auto verdict = dialog_.verdict();
    txtCheckVersion_->setText(fromDevice(verdict.text));
    auto palette = this->palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));  // nothing to type here
    if (verdict.isWarning) palette.setColor(QPalette::Text, Qt::red);
    txtCheckVersion_->setPalette(palette);
    txtView_->setPlainText(fromDevice(dialog_.details()));
    labStep_->setText(fromDevice(dialog_.step()));
    showMemory();
    cboROMs_->setToolTip(plainToolTip(cboROMs_->currentText()));
    cmdOK_->setEnabled(dialog_.selected() >= 0);
}

/// Only an image that lies on this computer can be drawn. It may be older than the one on the site, so the heading says
/// that it is the copy.
void frmQuery::showMemory() {
    const int at = dialog_.selected();
    const auto image = at < 0 ? Image() : localImage_(dialog_.entries()[static_cast<std::size_t>(at)].record);
    const auto map = memoryMapOf(image);
    labMemory_->showText(tr("Memory map of the copy on this computer, %1").arg(fromPath(image.name())));
    labMemory_->setVisible(map.has_value());
    picMemory_->showMap(map);
    picMemory_->setVisible(map.has_value());
}

}  // namespace corvane
