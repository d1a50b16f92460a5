#include "window/widgets/QtText.h"

#include <QFile>
#include <QTextDocument>

#include "text/Cp1252.h"

namespace corvane {

QString fromDevice(std::string_view text1252) {
    auto text = QString::fromStdString(toUtf8(text1252));
    text.replace("\r\n", "\n");
    text.replace('\r', '\n');
    text.remove(QChar::Null);  // would cut the text short in some controls
    return text;
}

QString plainToolTip(const QString& text) {
    if (!Qt::mightBeRichText(text)) return text;
    return "<qt>" + text.toHtmlEscaped().replace('\n', "<br>") + "</qt>";
}

std::string toDevice(const QString& text) { return fromUtf8(text.toStdString()); }

QString fromPath(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(path)); }

std::string toPath(const QString& path) { return QFile::encodeName(path).toStdString(); }

}  // namespace corvane
