#include "window/widgets/LogPane.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QSaveFile>
#include <QTextCursor>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {

LogPane::LogPane() {
    named(this, "txtInfo", tr("Log"), tr("What the run does, step by step"));
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setAcceptDrops(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setToolTip({});  // would cover the text
}

void LogPane::ShowInfo(std::string_view text) {
    const bool dropped = log_.append(text);
    if (dropped) setPlainText(fromDevice(log_.text()));
    auto cursor = textCursor();
    cursor.movePosition(QTextCursor::End);
    if (!dropped) cursor.insertText(fromDevice(text));
    setTextCursor(cursor);  // which scrolls to it
}

void LogPane::clear() {
    log_.clear();
    QPlainTextEdit::clear();
}

void LogPane::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    ensureCursorVisible();  // the card of a verdict takes room at the bottom
}

void LogPane::copyAll() const { QGuiApplication::clipboard()->setText(fromDevice(log_.text())); }

QString LogPane::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    file.write(fromDevice(log_.text()).toUtf8());
    return file.commit() ? QString() : file.errorString();
}

}  // namespace corvane
