#include "window/dialogs/Questions.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "platform/ProgramInfo.h"
#include "window/dialogs/frmQuery.h"
#include "window/presenter/PasswordRemark.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

/// The buttons that a ready-made dialog brings, under the names that all dialogs use.
void nameButtons(QDialog& dialog) {
    for (auto* box : dialog.findChildren<QDialogButtonBox*>()) {
        if (auto* button = box->button(QDialogButtonBox::Ok)) button->setObjectName("cmdOK");
        if (auto* button = box->button(QDialogButtonBox::Cancel)) button->setObjectName("cmdCancel");
    }
}

}  // namespace

void Questions::abandon() {
    isAbandoned_ = true;
    for (qsizetype i = open_.size(); i > 0; --i) open_.at(i - 1)->reject();
}

QWidget* Questions::owner() const {
    if (open_.isEmpty()) return &window_;
    return open_.back();
}

/// Shows the dialog until it is answered. False when the answer does not count, because the window was asked to close.
bool Questions::show(QDialog& dialog) {
    if (isAbandoned_) return false;
    open_.append(&dialog);
    QApplication::setOverrideCursor(Qt::ArrowCursor);  // the run's hourglass does not apply to its questions
    dialog.exec();
    QApplication::restoreOverrideCursor();
    open_.removeLast();
    if (owner()->isVisible()) owner()->activateWindow();  // some window managers leave the keyboard nowhere
    return !isAbandoned_;
}

std::string Questions::inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) {
    QInputDialog box(owner());
    named(&box, "frmPassword");
    box.setWindowTitle(fromDevice(title));
    box.setLabelText(fromDevice(prompt) + "\n\n" + QString::fromStdString(passwordRemark(passwordsAsked_++)));
    box.setTextEchoMode(QLineEdit::Password);
    box.setTextValue(fromDevice(byDefault));
    box.setOkButtonText(QObject::tr("&OK"));  // also makes Qt create the controls that are named below
    named(box.findChild<QLineEdit*>(), "txtPassword", box.labelText());
    nameButtons(box);
    return show(box) && box.result() == QDialog::Accepted ? toDevice(box.textValue()) : std::string();
}

bool Questions::messageBox(Question question, const std::string& text) {
    QMessageBox box(QMessageBox::Warning, kProgramTitle, fromDevice(text), QMessageBox::Ok | QMessageBox::Cancel,
                    owner());
    named(&box, "frmMessage");
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(isUsual(question) ? QMessageBox::Ok : QMessageBox::Cancel);
    box.button(QMessageBox::Ok)->setObjectName("cmdOK");
    box.button(QMessageBox::Cancel)->setObjectName("cmdCancel");
    isAskingAboutHarm_ = isAboutHarm(question);
    const bool counts = show(box);
    isAskingAboutHarm_ = false;
    return counts && box.clickedButton() == box.button(QMessageBox::Ok);
}

void Questions::chooseFirmware(FirmwareDialog& dialog) {
    frmQuery form(dialog, *this, localImage, owner());
    show(form);
}

}  // namespace corvane
