#pragma once

#include <QDialog>
#include <functional>

#include "face/FirmwareDialog.h"
#include "window/widgets/ElidedLabel.h"
#include "window/widgets/MemoryView.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStringListModel;

namespace corvane {

/// Shows the selection of an image and hands clicks to it. Neither the selection nor the prompts are owned.
class frmQuery : public QDialog {
public:
    /// Gives an entry's image as far as it is on this computer, or none.
    using LocalImage = std::function<Image(const FirmwareRecord& record)>;

    frmQuery(FirmwareDialog& dialog, OperatorPrompts& prompts, LocalImage localImage, QWidget* owner);

private:
    void arrange();
    void makeList();
    void list();
    void find(const QString& text);
    void cboROMs_Click();
    void cmdOK_Click();
    void showSelected();
    void showComparison();
    void showMemory();
    void makeControls();
    void makeLabels();
    QWidget* makeVersions();
    QLayout* makeForm();
    QWidget* makeButtons();

    FirmwareDialog& dialog_;
    OperatorPrompts& prompts_;
    LocalImage localImage_;
    QLineEdit* txtFind_ = nullptr;
    QComboBox* cboROMs_ = nullptr;
    QStringListModel* listed_ = nullptr;  // the entries that were found
    QLineEdit* txtCheckVersion_ = nullptr;
    QLabel* labFrom_ = nullptr;
    QLabel* labTo_ = nullptr;
    QLabel* labStep_ = nullptr;
    QLabel* labMadeFor_ = nullptr;
    QLabel* labCaution_ = nullptr;
    QPlainTextEdit* txtView_ = nullptr;
    ElidedLabel* labMemory_ = nullptr;
    MemoryView* picMemory_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
};

}  // namespace corvane
