#pragma once

#include <QDialog>

#include "app/FirmwareDialog.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSortFilterProxyModel;

namespace corvane {

/// Shows the selection of an image and hands clicks to it. Neither the selection nor the prompts are owned.
class frmQuery : public QDialog {
public:
    frmQuery(FirmwareDialog& dialog, OperatorPrompts& prompts, QWidget* owner);

private:
    void arrange();
    void fill();
    void cboROMs_Click();
    void cmdOK_Click();
    void showSelected();

    FirmwareDialog& dialog_;
    OperatorPrompts& prompts_;
    QLineEdit* txtFind_ = nullptr;
    QComboBox* cboROMs_ = nullptr;
    QSortFilterProxyModel* found_ = nullptr;  // the entries that the combo box lists
    QLineEdit* txtCheckVersion_ = nullptr;
    QPlainTextEdit* txtView_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
};

}  // namespace corvane
