#include "window/widgets/VerdictCard.h"

#include <QAccessible>
#include <QResizeEvent>
#include <QTextDocument>
#include <cmath>

#include "window/widgets/Naming.h"

namespace corvane {
namespace {

QString paragraph(const QString& text) { return "<p style='margin: 0 0 4px 0'>" + text.toHtmlEscaped() + "</p>"; }

QString cardText(const Verdict& verdict, const QStringList& advice) {
    QString text;
    for (const auto& line : advice) text += paragraph(line);
    for (const auto& fact : verdict.facts) text += paragraph(QString::fromStdString(fact));
    if (const auto unplug = QString::fromStdString(verdict.unplugText()); !unplug.isEmpty())
        text += "<b>" + paragraph(unplug) + "</b>";
    if (verdict.steps.empty()) return text;
    text += "<ol style='margin: 4px 0 0 0'>";
    for (const auto& step : verdict.steps) text += "<li>" + QString::fromStdString(step).toHtmlEscaped() + "</li>";
    return text + "</ol>";
}

}  // namespace

VerdictCard::VerdictCard() {
    named(this, "txtVerdict", tr("How the last run ended"));
    setTabChangesFocus(true);
    setOpenLinks(false);
    setAcceptDrops(false);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);  // a digest has no blanks
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    setMinimumHeight(fontMetrics().height() * 4);
    hide();
}

void VerdictCard::showVerdict(const Verdict& verdict, const QStringList& advice) {
    setHtml(cardText(verdict, advice));
    setAccessibleDescription(QString::fromStdString(verdict.headline) + "\n" + toPlainText());
    show();
    updateGeometry();
    QAccessibleEvent spoken(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
}

QSize VerdictCard::sizeHint() const {
    return {200, static_cast<int>(std::ceil(document()->size().height())) + 2 * frameWidth()};
}

void VerdictCard::resizeEvent(QResizeEvent* event) {
    QTextBrowser::resizeEvent(event);
    if (event->oldSize().width() != event->size().width()) updateGeometry();
}

}  // namespace corvane
