#include "window/widgets/NoticeStrip.h"

#include <QAccessible>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

QString coloursFor(RunNotice::Level level) {
    switch (level) {
        case RunNotice::Level::plain:
            break;
        case RunNotice::Level::safe:
            return "color: white; background: #1b6e3c;";
        case RunNotice::Level::caution:
            return "color: black; background: #f2b632; font-weight: bold;";
        case RunNotice::Level::danger:
            return "color: white; background: #a33300; font-weight: bold;";
    }
    return "color: palette(window-text); background: palette(alternate-base);";
}

}  // namespace

NoticeStrip::NoticeStrip() {
    named(this, "labNotice");
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setMargin(8);
}

void NoticeStrip::say(const RunNotice& notice) {
    const auto text = QString::fromStdString(notice.text);
    setToolTip(plainToolTip(QString::fromStdString(notice.details)));
    if (text == this->text()) return;
    setStyleSheet("QLabel {" + coloursFor(notice.level) + " border-radius: 4px; }");
    setText(text);
    QAccessibleEvent spoken(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
}

}  // namespace corvane
