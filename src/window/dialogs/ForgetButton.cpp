#include "window/dialogs/ForgetButton.h"

#include <QMenu>
#include <QMessageBox>

#include "platform/ProgramInfo.h"
#include "window/widgets/Naming.h"

namespace corvane {

ForgetButton::ForgetButton() : menu_(new QMenu(this)) {
    named(this, "cmdForget", {}, tr("For one that is well, or will never be: it is not named any more"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAutoDefault(false);
    menu_->setObjectName("mnuForget");
    connect(this, &QPushButton::clicked, this, [this] {
        if (left_.size() == 1) ask(InterruptedRun(left_.front()));  // asking may change what is offered
    });
    hide();
}

void ForgetButton::offer(const std::vector<InterruptedRun>& left) {
    setVisible(!left.empty());
    if (left == left_) return;
    left_ = left;
    setText(left.size() == 1 ? tr("For&get this device…") : tr("For&get a device"));
    menu_->clear();
    for (const auto& run : left) {
        const auto text = QString::fromStdString(run.brief()).replace('&', "&&") + tr("…");
        menu_->addAction(text, this, [this, run] { ask(run); });
    }
    setMenu(left.size() > 1 ? menu_ : nullptr);
}

void ForgetButton::ask(const InterruptedRun& run) {
    QMessageBox box(QMessageBox::Question, kProgramTitle,
                    tr("Forget the device that was left at %1?\n\nDo so when it is well, or will never be. Nothing is "
                       "done to the device; it is only not named any more.")
                        .arg(QString::fromStdString(run.brief())),
                    QMessageBox::NoButton, window());
    named(&box, "frmForget");
    box.setTextFormat(Qt::PlainText);
    auto* forget = named(box.addButton(tr("&Forget"), QMessageBox::AcceptRole), "cmdOK");
    auto* cancel = named(box.addButton(QMessageBox::Cancel), "cmdCancel");
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == forget && onForget) onForget(run);
}

}  // namespace corvane
