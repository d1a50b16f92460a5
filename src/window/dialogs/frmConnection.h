#pragma once

#include <QDialog>

#include "platform/SettingsStore.h"
#include "settings/ConnectionSettings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

namespace corvane {

/// How the site is reached, and what follows an update. Reads its settings when it is made and writes them on OK;
/// changes nothing in a session that is on. The store is not owned.
class frmConnection : public QDialog {
public:
    frmConnection(SettingsStore& store, QWidget* owner);

private:
    void makeControls();
    void arrange();
    void load();
    void cmbAccessType_Click();
    void cmdOK_Click();

    SettingsStore& store_;
    ConnectionSettings loaded_;
    QComboBox* cmbAccessType_ = nullptr;
    QLineEdit* txtProxy_ = nullptr;
    QComboBox* cmbEncryption_ = nullptr;
    QLineEdit* txtAuthorities_ = nullptr;
    QCheckBox* chkAskVersion_ = nullptr;
    QCheckBox* chkSpareBattery_ = nullptr;
    QLabel* labProblem_ = nullptr;
};

}  // namespace corvane
