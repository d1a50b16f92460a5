#pragma once

#include <QWidget>
#include <optional>

namespace corvane {

/// Asks for files over a window, which is not owned, and remembers the folder of the images.
class FileDialogs {
public:
    /// Qt's own dialogs or the desktop's; the folder is where the first one for an image begins.
    FileDialogs(QWidget& window, bool usesQtDialogs, QString folder)
        : window_(window), usesQtDialogs_(usesQtDialogs), folder_(std::move(folder)) {}

    /// The path of an image in the system's bytes; nothing when the operator gave up.
    std::optional<std::string> pickImage();

    /// Where to save something that has this name so far, or a log; empty when the operator gave up.
    QString placeFor(const QString& name);
    QString placeForLog();

private:
    QWidget& window_;
    bool usesQtDialogs_;
    QString folder_;
};

}  // namespace corvane
