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

namespace corvane {

frmConnection::frmConnection(SettingsStore& store, QWidget* owner) : QDialog(owner), store_(store) {
    named(this, "frmConnection");
    setWindowTitle(tr("Options"));
    cmbAccessType_ = named(new QComboBox, "cmbAccessType", tr("Link by"), tr("How the site is reached"));
    cmbAccessType_->addItems({tr("Default"), tr("Direct"), tr("Proxy")});
    txtProxy_ = named(new QLineEdit, "txtProxy", tr("Proxy"), tr("Host and port of the proxy, as host:port"));
    txtProxy_->setPlaceholderText(tr("host:port"));
    chkAskVersion_ = named(new QCheckBox(tr("&Ask an updated device for its version")), "chkAskVersion",
                           tr("Ask an updated device for its version"),
                           tr("After an update the port is opened once more, to show what the device runs now"));
    labProblem_ = new QLabel;
    labProblem_->setWordWrap(true);
    labProblem_->hide();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    named(buttons->button(QDialogButtonBox::Ok), "cmdOK", tr("OK"), tr("Keeps these settings"));
    named(buttons->button(QDialogButtonBox::Cancel), "cmdCancel", tr("Cancel"), tr("Leaves the settings as they were"));

    auto* fields = new QFormLayout;
    fields->addRow(tr("&Link by"), cmbAccessType_);
    fields->addRow(tr("&Proxy"), txtProxy_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(chkAskVersion_);
    layout->addWidget(labProblem_);
    layout->addStretch();
    layout->addWidget(buttons);
    setMinimumWidth(380);

    loaded_ = StoredSettings(store_).connection();
    txtProxy_->setText(QString::fromStdString(loaded_.proxy));
    cmbAccessType_->setCurrentIndex(loaded_.accessType);
    chkAskVersion_->setChecked(loaded_.asksVersion);
    cmbAccessType_Click();
    connect(cmbAccessType_, &QComboBox::currentIndexChanged, this, [this] { cmbAccessType_Click(); });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { cmdOK_Click(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
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
    settings.asksVersion = chkAskVersion_->isChecked();
    if (StoredSettings(store_).save(settings, loaded_)) return accept();
    labProblem_->setText(tr("The settings could not be saved. Is there room on the disk, and may you write them?"));
    labProblem_->show();
}

}  // namespace corvane
