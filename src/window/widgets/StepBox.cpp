#include "window/widgets/StepBox.h"

#include <QLabel>
#include <QVBoxLayout>

namespace corvane {

StepBox::StepBox(int number, const QString& title) {
    setFrameShape(QFrame::StyledPanel);
    setObjectName("frameStep" + QString::number(number));
    setAccessibleName(tr("Step %1: %2").arg(number).arg(title));

    number_ = new QLabel(QString::number(number));
    number_->setAlignment(Qt::AlignCenter);
    const int size = number_->fontMetrics().height() + 6;
    number_->setFixedSize(size, size);
    auto* heading = new QLabel(title);
    auto font = heading->font();
    font.setBold(true);
    heading->setFont(font);

    auto* head = new QHBoxLayout;
    head->addWidget(number_);
    head->addWidget(heading, 1);
    body_ = new QVBoxLayout(this);
    body_->addLayout(head);
    setCurrent(false);
}

void StepBox::setCurrent(bool isCurrent) {
    const QString colours = isCurrent ? "color: palette(highlighted-text); background: palette(highlight);"
                                      : "color: palette(window-text); background: palette(midlight);";
    number_->setStyleSheet("QLabel {" + colours +
                           QString(" font-weight: bold; border-radius: %1px; }").arg(number_->width() / 2));
}

}  // namespace corvane
