#include "window/rehearsal/frmRehearsal.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "window/widgets/DialogLayout.h"
#include "window/widgets/Naming.h"

namespace corvane {

frmRehearsal::frmRehearsal(QWidget* owner) : QDialog(owner) {
    named(this, "frmRehearsal");
    setWindowTitle(tr("Rehearse an Update"));
    auto* layout = new QVBoxLayout;
    auto* labIntroduction =
        new QLabel(tr("What do you want to practise? The device is simulated, and nothing of the "
                      "rehearsal is kept."));
    labIntroduction->setWordWrap(true);
    layout->addWidget(labIntroduction);
    for (std::size_t i = 0; i < rehearsalKinds().size(); ++i) {
        const auto& kind = rehearsalKinds()[i];
        auto* button = named(new QRadioButton(kind.title), "", QString(kind.title).remove('&'), kind.description);
        button->setObjectName("optKind" + QString::number(i));
        button->setToolTip({});  // stands below it
        button->setChecked(i == 0);
        connect(button, &QRadioButton::toggled, this, [this, i](bool isOn) {
            if (isOn) chosen_ = i;
        });
        auto* labDescription = new QLabel(kind.description);
        labDescription->setWordWrap(true);
        labDescription->setIndent(button->iconSize().width() + 8);
        layout->addWidget(button);
        if (i == 0) button->setFocus();
        layout->addWidget(labDescription);
    }
    auto* buttons = new QDialogButtonBox;
    auto* cmdOK = named(new QPushButton(tr("&Start rehearsal")), "cmdOK", tr("Start rehearsal"),
                        tr("Opens the window with a simulated device"));
    auto* cmdCancel = named(new QPushButton(tr("&Cancel")), "cmdCancel", tr("Cancel"), tr("Rehearses nothing"));
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    cmdOK->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addStretch();
    arrangeDialog(*this, layout, buttons, {420, 0});
}

}  // namespace corvane
