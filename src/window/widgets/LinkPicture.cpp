#include "window/widgets/LinkPicture.h"

#include <QPainter>
#include <QPainterPath>

#include "window/widgets/Naming.h"
#include "window/widgets/Tones.h"

namespace corvane {
namespace {

using Cable = Card::Cable;
using Tone = Card::Tone;

constexpr double kThick = 2.5;     // of lines, in pixels
constexpr double kHalfCable = 90;  // from the drawing's middle to each end

QString wordsFor(Cable cable) {
    switch (cable) {
        case Cable::none:
            return QObject::tr("No device is connected.");
        case Cable::ready:
            break;
        case Cable::moving:
            return QObject::tr("Something is being sent to the device.");
        case Cable::broken:
            return QObject::tr("The connection to the device has failed.");
        case Cable::done:
            return QObject::tr("The device is updated.");
    }
    return QObject::tr("A port is there.");
}

}  // namespace

LinkPicture::LinkPicture() {
    named(this, "picLink", tr("Computer and device"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void LinkPicture::show(Cable cable) {
    if (cable_ == cable) return;
    cable_ = cable;
    setAccessibleDescription(wordsFor(cable));
    update();
}

void LinkPicture::advance() {
    if (cable_ != Cable::moving) return;
    ++step_;
    update();
}

void LinkPicture::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF middle(width() / 2.0, height() / 2.0);
    const QPointF reach(kHalfCable, 0);
    paintCable(painter, middle - reach, middle + reach);
    paintComputer(painter, middle - reach - QPointF(30, 0));
    paintDevice(painter, middle + reach + QPointF(24, 0));
}

void LinkPicture::paintComputer(QPainter& painter, const QPointF& middle) const {
    painter.setPen(QPen(palette().color(QPalette::WindowText), kThick, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(middle.x() - 26, middle.y() - 24, 52, 36), 4, 4);
    QPainterPath foot(middle + QPointF(-34, 18));
    foot.lineTo(middle + QPointF(34, 18));
    painter.drawPath(foot);
    painter.setPen(QPen(toneColour(Tone::busy, palette()), kThick, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(middle + QPointF(-16, -12), middle + QPointF(2, -12));
    painter.drawLine(middle + QPointF(-16, -4), middle + QPointF(12, -4));
}

/// A chip with its pins; the arrow, or what has become of it, in the middle.
void LinkPicture::paintDevice(QPainter& painter, const QPointF& middle) const {
    const bool isThere = cable_ != Cable::none;
    const auto ink = isThere ? palette().color(QPalette::WindowText) : lineColour(palette());
    painter.setPen(QPen(ink, kThick, isThere ? Qt::SolidLine : Qt::DashLine, Qt::FlatCap, Qt::RoundJoin));
    for (const int y : {-12, 0, 12}) {
        if (!isThere) break;
        painter.drawLine(middle + QPointF(-26, y), middle + QPointF(-20, y));
        painter.drawLine(middle + QPointF(20, y), middle + QPointF(26, y));
    }
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(middle.x() - 20, middle.y() - 24, 40, 48), 6, 6);
    const auto mark = [&](Tone tone, const QPolygonF& line) {
        painter.setPen(QPen(toneColour(tone, palette()), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(line.translated(middle));
    };
    if (cable_ == Cable::done) mark(Tone::good, {QPointF(-9, 1), QPointF(-3, 8), QPointF(9, -7)});
    if (cable_ == Cable::broken) mark(Tone::danger, {QPointF(0, -10), QPointF(0, 4)});
    if (cable_ == Cable::broken) mark(Tone::danger, {QPointF(0, 12), QPointF(0, 12.1)});
    if (cable_ == Cable::moving) {
        mark(Tone::busy, {QPointF(0, 9), QPointF(0, -8)});
        mark(Tone::busy, {QPointF(-7, -1), QPointF(0, -9), QPointF(7, -1)});
    }
}

void LinkPicture::paintCable(QPainter& painter, const QPointF& from, const QPointF& to) const {
    constexpr double kDash = 4, kGap = 3;  // widths of the line
    QPen pen(palette().color(QPalette::WindowText), kThick + 1, Qt::SolidLine, Qt::FlatCap);
    const auto middle = (from + to) / 2;
    switch (cable_) {
        case Cable::none:
            pen.setColor(lineColour(palette()));
            pen.setDashPattern({kDash / 2, kGap});
            break;
        case Cable::ready:
            break;
        case Cable::moving:
            pen.setColor(toneColour(Tone::busy, palette()));
            pen.setDashPattern({kDash, kGap / 2});
            pen.setDashOffset(-step_);
            break;
        case Cable::done:
            pen.setColor(toneColour(Tone::good, palette()));
            break;
        case Cable::broken:
            pen.setColor(toneColour(Tone::danger, palette()));
            painter.setPen(pen);
            painter.drawLine(from, middle - QPointF(12, 0));
            painter.drawLine(middle + QPointF(12, 0), to);
            painter.drawLine(middle + QPointF(-8, -9), middle + QPointF(-3, 9));
            painter.drawLine(middle + QPointF(3, -9), middle + QPointF(8, 9));
            return;
    }
    painter.setPen(pen);
    painter.drawLine(from, to);
}

}  // namespace corvane
