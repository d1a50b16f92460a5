#include "window/widgets/ProgramIcon.h"

#include <QPainter>
#include <QPixmap>

namespace corvane {
namespace {

QLinearGradient downwards(const char* from, const char* to) {
    QLinearGradient gradient(0, 0, 0, 128);
    gradient.setColorAt(0, QColor(from));
    gradient.setColorAt(1, QColor(to));
    return gradient;
}

/// A chip that takes new firmware, as in packaging/corvane.svg.
QPixmap drawnIcon(int size) {
    constexpr double kUnits = 128;
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / kUnits, size / kUnits);
    painter.setPen(Qt::NoPen);
    painter.setBrush(downwards("#c3ccd2", "#7d8a93"));
    for (const int y : {24, 56, 88}) painter.drawRoundedRect(0, y, 128, 16, 3, 3);
    painter.setBrush(downwards("#23808f", "#135b6c"));
    painter.drawRoundedRect(16, 8, 96, 112, 12, 12);
    painter.setBrush(Qt::white);
    painter.drawPolygon(QPolygon({{64, 20}, {98, 56}, {76, 56}, {76, 88}, {52, 88}, {52, 56}, {30, 56}}));
    painter.setBrush(QColor("#ffb545"));
    painter.drawRoundedRect(40, 96, 48, 12, 3, 3);
    return pixmap;
}

}  // namespace

QIcon programIcon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) icon.addPixmap(drawnIcon(size));
    return icon;
}

}  // namespace corvane
