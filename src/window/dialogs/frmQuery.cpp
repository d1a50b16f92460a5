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

#include "text/Text.h"
#include "window/widgets/DialogLayout.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"
#include "window/widgets/Tones.h"

namespace corvane {
namespace {

/// Lists longer than this get a field to search them.
constexpr int kShortList = 12;

struct Look {
    QString symbol;
    Card::Tone tone;
};

/// The symbol says it without the colour.
Look lookOf(FirmwareDialog::Comparison::Kind kind) {
    using Kind = FirmwareDialog::Comparison::Kind;
    switch (kind) {
        case Kind::newer:
            return {"\u25b2 ", Card::Tone::good};
        case Kind::same:
            return {"= ", Card::Tone::plain};
        case Kind::older:
            return {"\u25bc ", Card::Tone::caution};
        case Kind::otherProduct:
            return {"\u2715 ", Card::Tone::danger};
        case Kind::none:
        case Kind::unknown:
            break;
    }
    return {"? ", Card::Tone::caution};
}

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
    makeControls();
    txtView_->setFont(fixed);
    makeLabels();

    auto* layout = new QVBoxLayout;
    layout->addWidget(makeVersions());
    layout->addWidget(labCaution_);
    layout->addLayout(makeForm());
    layout->addWidget(labDevice);
    layout->addWidget(txtView_, 1);
    layout->addWidget(labMemory_);
    layout->addWidget(picMemory_);
    arrangeDialog(*this, layout, makeButtons(), {560, 480});
}

void frmQuery::makeControls() {
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
}

void frmQuery::makeLabels() {
    labStep_ = namedLabel(new QLabel, "labStep", tr("How the versions compare"));
    labFrom_ = namedLabel(new QLabel, "labFrom", tr("The device's version"));
    labTo_ = namedLabel(new QLabel, "labTo", tr("The image's version"));
    labMadeFor_ = namedLabel(new QLabel, "labMadeFor", tr("The product that the image is made for"));
    labCaution_ = namedLabel(new QLabel, "labCaution", tr("What is unusual"));
    for (auto* label : {labStep_, labFrom_, labTo_, labMadeFor_, labCaution_}) label->setTextFormat(Qt::PlainText);
    labMadeFor_->setWordWrap(true);
    labCaution_->setWordWrap(true);
    labMemory_ = named(new ElidedLabel(Qt::ElideMiddle), "labMemory");
    labMemory_->setTextFormat(Qt::PlainText);
    picMemory_ = new MemoryView;
}

QLayout* frmQuery::makeForm() {
    auto* fields = new QFormLayout;
    fields->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const bool isLong = dialog_.entries().size() > kShortList;
    if (isLong)
        fields->addRow(tr("&Find"), txtFind_);
    else
        txtFind_->setParent(this), txtFind_->hide();
    fields->addRow(tr("&Image"), cboROMs_);
    fields->addRow(tr("C&omparison"), txtCheckVersion_);
    fields->addRow(tr("Made for"), labMadeFor_);
    auto* labVouched =
        namedLabel(new QLabel(fromDevice(dialog_.vouching())), "labVouched", tr("Who vouches for the image"));
    labVouched->setTextFormat(Qt::PlainText);
    labVouched->setWordWrap(true);
    if (dialog_.vouching().empty()) {
        labVouched->setParent(this);
        labVouched->hide();
    } else {
        fields->addRow(tr("Proof"), labVouched);
    }
    return fields;
}

QWidget* frmQuery::makeButtons() {
    auto* buttons = new QDialogButtonBox;
    cmdOK_ =
        named(new QPushButton(tr("&Update…")), "cmdOK", tr("Update"), tr("Asks once more, then installs this image"));
    auto* cmdCancel =
        named(new QPushButton(tr("&Cancel")), "cmdCancel", tr("Cancel"), tr("Leaves the device as it is"));
    buttons->addButton(cmdOK_, QDialogButtonBox::ActionRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    cmdOK_->setDefault(true);
    cmdCancel->setAutoDefault(false);  // Return is for what is to be done, wherever the focus has been
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    return buttons;
}

/// From version to version, in large letters, and how they compare.
QWidget* frmQuery::makeVersions() {
    constexpr double kLarge = 20;  // points
    auto font = this->font();
    font.setPointSizeF(kLarge);
    auto* arrow = new QLabel("\u2192");
    for (auto* label : {labFrom_, labTo_, arrow}) label->setFont(font);
    auto* box = new QWidget;
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(labFrom_);
    row->addWidget(arrow);
    row->addWidget(labTo_);
    row->addSpacing(12);
    row->addWidget(labStep_);
    row->addStretch();
    return box;
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
    txtCheckVersion_->setStyleSheet(QString("QLineEdit { background: transparent; %1 }")  // nothing to type here
                                        .arg(verdict.isWarning ? "color: red;" : ""));
    txtView_->setPlainText(fromDevice(dialog_.details()));
    showComparison();
    showMemory();
    cboROMs_->setToolTip(plainToolTip(cboROMs_->currentText()));
    cmdOK_->setEnabled(dialog_.selected() >= 0);
}

void frmQuery::showComparison() {
    const auto compared = dialog_.comparison();
    const auto look = lookOf(compared.kind);
    labFrom_->setText(fromDevice(compared.from));
    labTo_->setText(fromDevice(compared.to));
    labStep_->setText(look.symbol + fromDevice(compared.words));
    labStep_->setStyleSheet(
        QString("QLabel { color: %1; background: %2; border-radius: 9px; padding: 3px 10px; }")
            .arg(this->palette().color(QPalette::Base).name(), toneColour(look.tone, this->palette()).name()));
    labMadeFor_->setText(fromDevice(dialog_.madeFor()));
    labCaution_->setText(fromDevice(joined(dialog_.cautions(), "\r\n")));
    labCaution_->setVisible(!labCaution_->text().isEmpty());
    labFrom_->parentWidget()->setVisible(!compared.to.empty());
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
