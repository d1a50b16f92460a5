#include "window/widgets/CardView.h"

#include <QAccessible>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QResizeEvent>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <cmath>

#include "window/widgets/Naming.h"
#include "window/widgets/Tones.h"

namespace corvane {
namespace {

constexpr int kSymbol = 28, kGap = 14;  // pixels

QString paragraph(const QString& text) { return "<p style='margin: 0 0 4px 0'>" + text.toHtmlEscaped() + "</p>"; }

QString htmlOf(const Card& card) {
    QString text;
    for (const auto& line : card.lines) text += paragraph(QString::fromStdString(line));
    if (!card.unplug.empty()) text += "<b>" + paragraph(QString::fromStdString(card.unplug)) + "</b>";
    if (card.steps.empty()) return text;
    text += "<ol style='margin: 4px 0 0 0'>";
    for (const auto& step : card.steps) text += "<li>" + QString::fromStdString(step).toHtmlEscaped() + "</li>";
    return text + "</ol>";
}

}  // namespace

/// As high as its text at the present width, on the card's own ground.
class CardText : public QTextBrowser {
public:
    CardText() {
        named(this, "txtVerdict", tr("What happened"));
        setFrameShape(NoFrame);
        setTabChangesFocus(true);
        setOpenLinks(false);
        setAcceptDrops(false);
        setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);  // a path has no blanks
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        viewport()->setAutoFillBackground(false);
        document()->setDocumentMargin(0);
    }

    void showHtml(const QString& html) {
        setHtml(html);
        fit();
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QTextBrowser::resizeEvent(event);
        if (event->oldSize().width() != event->size().width()) fit();
    }

private:
    void fit() {
        document()->setTextWidth(viewport()->width());
        setFixedHeight(static_cast<int>(std::ceil(document()->size().height())) + 1);
    }
};

CardView::CardView() {
    setObjectName("frameCard");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    labNotice_ = named(new QLabel, "labNotice");
    labNotice_->setTextFormat(Qt::PlainText);
    labNotice_->setWordWrap(true);
    labNotice_->setFocusPolicy(Qt::TabFocus);
    labNotice_->setMinimumHeight(kSymbol);
    text_ = new CardText;
    body_ = new QVBoxLayout(this);
    body_->setContentsMargins(kGap + kSymbol + kGap, kGap, kGap, kGap);
    body_->setSpacing(6);
    body_->addWidget(labNotice_);
    body_->addWidget(text_);
}

void CardView::show(const Card& card) {
    const auto headline = QString::fromStdString(card.headline);
    const auto below = QString::fromStdString(card.textBelow());
    const bool isNew = headline != labNotice_->text() || below != labNotice_->accessibleDescription();
    if (!isNew && tone_ == card.tone) return;
    tone_ = card.tone;
    setSizes(card.isLarge);
    labNotice_->setText(headline);
    labNotice_->setAccessibleDescription(below);
    text_->showHtml(htmlOf(card));
    text_->setAccessibleDescription(headline + "\n" + text_->toPlainText());
    text_->setVisible(!below.isEmpty());
    update();
    QAccessibleEvent spoken(labNotice_, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
}

QWidget* CardView::text() const { return text_; }

void CardView::takeFocus() { labNotice_->setFocus(); }

void CardView::setSizes(bool isLarge) {
    constexpr double kHeadline = 1.3, kEnd = 20;  // of the window's font; points
    auto font = this->font();
    font.setPointSizeF(isLarge ? kEnd : font.pointSizeF() * kHeadline);
    font.setBold(!isLarge);
    labNotice_->setFont(font);
}

void CardView::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) update();
}

void CardView::paintEvent(QPaintEvent* /*event*/) {
    constexpr double kTint = 0.12, kRadius = 8;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto colour = toneColour(tone_, palette());
    painter.setPen(mixed(palette().color(QPalette::Window), colour, 0.6));
    painter.setBrush(mixed(palette().color(QPalette::Base), colour, kTint));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    paintSymbol(painter, {kGap, kGap, kSymbol, kSymbol});
    if (!labNotice_->hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kRadius, kRadius);
}

/// Each tone has a shape of its own: a dot, an arrow, a tick, a triangle, a cross.
void CardView::paintSymbol(QPainter& painter, const QRect& place) const {
    const auto ground = toneColour(tone_, palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    const QPointF middle = QRectF(place).center();
    if (tone_ == Card::Tone::caution) {
        QPainterPath triangle(QPointF(middle.x(), place.top() + 1));
        triangle.lineTo(place.right() + 1, place.bottom());
        triangle.lineTo(place.left(), place.bottom());
        triangle.closeSubpath();
        painter.drawPath(triangle);
    } else {
        painter.drawEllipse(place);
    }
    QPen pen(palette().color(QPalette::Base), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const auto at = [&](double x, double y) { return middle + QPointF(x, y); };
    switch (tone_) {
        case Card::Tone::plain:
            painter.drawPoint(at(0, -6));
            painter.drawLine(at(0, 0), at(0, 7));
            break;
        case Card::Tone::busy:
            painter.drawPolyline(QPolygonF{at(-3, -6), at(4, 0), at(-3, 6)});
            break;
        case Card::Tone::good:
            painter.drawPolyline(QPolygonF{at(-6, 0), at(-2, 5), at(6, -5)});
            break;
        case Card::Tone::caution:
            painter.drawLine(at(0, -4), at(0, 3));
            painter.drawPoint(at(0, 8));
            break;
        case Card::Tone::danger:
            painter.drawLine(at(-5, -5), at(5, 5));
            painter.drawLine(at(5, -5), at(-5, 5));
            break;
    }
}

}  // namespace corvane
