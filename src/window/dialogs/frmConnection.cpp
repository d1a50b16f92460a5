#include "window/dialogs/frmConnection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "settings/StoredSettings.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {

frmConnection::frmConnection(SettingsStore& store, QWidget* owner) : QDialog(owner), store_(store) {
    named(this, "frmConnection");
    setWindowTitle(tr("Options"));
    makeControls();
    arrange();
    load();
    cmbAccessType_Click();
    connect(cmbAccessType_, &QComboBox::currentIndexChanged, this, [this] { cmbAccessType_Click(); });
}

void frmConnection::makeControls() {
    cmbAccessType_ = named(new QComboBox, "cmbAccessType", tr("Link by"), tr("How the site is reached"));
    cmbAccessType_->addItems({tr("Default"), tr("Direct"), tr("Proxy")});
    txtProxy_ = named(new QLineEdit, "txtProxy", tr("Proxy"), tr("Host and port of the proxy, as host:port"));
    txtProxy_->setPlaceholderText(tr("host:port"));
    cmbEncryption_ =
        named(new QComboBox, "cmbEncryption", tr("Encryption"),
              tr("Whether the session with the site is encrypted; when it is required, a server without it "
                 "gets no password"));
    cmbEncryption_->addItems({tr("Off"), tr("When offered"), tr("Required")});
    txtAuthorities_ = named(new QLineEdit, "txtAuthorities", tr("Certificates"),
                            tr("A file of certificates that may vouch for the site, in place of the system's"));
    txtAuthorities_->setPlaceholderText(tr("the system's own"));
    chkAskVersion_ = named(new QCheckBox(tr("&Ask an updated device for its version")), "chkAskVersion",
                           tr("Ask an updated device for its version"),
                           tr("After an update the port is opened once more, to show what the device runs now"));
    chkSpareBattery_ =
        named(new QCheckBox(tr("&Spare the battery")), "chkSpareBattery", tr("Spare the battery"),
              tr("On battery an update takes up to a quarter longer on fast lines, and less of the processor"));
    labProblem_ = new QLabel;
    labProblem_->setWordWrap(true);
    labProblem_->hide();
}

void frmConnection::arrange() {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    named(buttons->button(QDialogButtonBox::Ok), "cmdOK", tr("OK"), tr("Keeps these settings"));
    named(buttons->button(QDialogButtonBox::Cancel), "cmdCancel", tr("Cancel"), tr("Leaves the settings as they were"));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { cmdOK_Click(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* fields = new QFormLayout;
    fields->addRow(tr("&Link by"), cmbAccessType_);
    fields->addRow(tr("&Proxy"), txtProxy_);
    fields->addRow(tr("&Encryption"), cmbEncryption_);
    fields->addRow(tr("&Certificates"), txtAuthorities_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(chkAskVersion_);
    layout->addWidget(chkSpareBattery_);
    layout->addWidget(labProblem_);
    layout->addStretch();
    layout->addWidget(buttons);
    setMinimumWidth(380);
}

void frmConnection::load() {
    loaded_ = StoredSettings(store_).connection();
    txtProxy_->setText(QString::fromStdString(loaded_.proxy));
    cmbAccessType_->setCurrentIndex(loaded_.accessType);
    cmbEncryption_->setCurrentIndex(static_cast<int>(loaded_.encryption));
    txtAuthorities_->setText(fromPath(loaded_.authorities));
    chkAskVersion_->setChecked(loaded_.asksVersion);
    chkSpareBattery_->setChecked(loaded_.sparesBattery);
}

void frmConnection::cmbAccessType_Click() {
    ConnectionSettings settings;
    settings.accessType = cmbAccessType_->currentIndex();
    txtProxy_->setEnabled(settings.usesProxy());
}

void frmConnection::cmdOK_Click() {
    ConnectionSettings settings;
    settings.accessType = cmbAccessType_->currentIndex();
    settings.proxy = txtProxy_->text().toStdString();
    settings.encryption = static_cast<SiteRoute::Encryption>(cmbEncryption_->currentIndex());
    settings.authorities = toPath(txtAuthorities_->text());
    settings.asksVersion = chkAskVersion_->isChecked();
    settings.sparesBattery = chkSpareBattery_->isChecked();
    if (StoredSettings(store_).save(settings, loaded_)) return accept();
    labProblem_->setText(tr("The settings could not be saved. Is there room on the disk, and may you write them?"));
    labProblem_->show();
}

}  // namespace corvane
