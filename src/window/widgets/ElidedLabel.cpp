#include "window/widgets/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

#include "window/widgets/QtText.h"

namespace corvane {

void ElidedLabel::showText(const QString& text, const QString& toolTip) {
    setText(text);
    setToolTip(plainToolTip(toolTip.isEmpty() ? text : toolTip));
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto room = contentsRect();
    style()->drawItemText(&painter, room, Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                          fontMetrics().elidedText(text(), mode_, room.width()), foregroundRole());
}

}  // namespace corvane
