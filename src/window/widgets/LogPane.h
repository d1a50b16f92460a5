#pragma once

#include <QPlainTextEdit>

#include "face/Log.h"
#include "window/presenter/LogText.h"

namespace corvane {

/// txtInfo, the pane with the running log.
class LogPane : public QPlainTextEdit, public Log {
public:
    LogPane();

    void ShowInfo(std::string_view text) override;
    void clear() override;

    /// Puts all of it on the clipboard.
    void copyAll() const;

    /// Writes it to a file as UTF-8 with LF; an empty text, or why that did not work.
    QString save(const QString& path) const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    LogText log_;
};

}  // namespace corvane
