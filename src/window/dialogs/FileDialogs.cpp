#include "window/dialogs/FileDialogs.h"

#include <QFileDialog>

#include "window/widgets/QtText.h"

namespace corvane {
namespace {

QFileDialog::Options optionsFor(bool usesQtDialogs) {
    return usesQtDialogs ? QFileDialog::DontUseNativeDialog : QFileDialog::Options();
}

/// Some window managers leave the keyboard nowhere when a dialog has closed.
void leadBackTo(QWidget& window) {
    if (window.isVisible()) window.activateWindow();
}

}  // namespace

std::optional<std::string> FileDialogs::pickImage() {
    // The operator reads the text before the patterns; some desktops tell "hex" from "HEX", so each case is listed.
    const auto filter = QObject::tr("Intel HEX (*.Hex)") + " (*.Hex *.hex *.HEX *.hEx *.heX *.HEx *.HeX *.hEX)";
    const auto options = optionsFor(usesQtDialogs_) | QFileDialog::HideNameFilterDetails;
    const auto path =
        QFileDialog::getOpenFileName(&window_, QObject::tr("Open Firmware File"), folder_, filter, nullptr, options);
    leadBackTo(window_);
    if (path.isEmpty()) return std::nullopt;
    folder_ = QFileInfo(path).path();
    return toPath(path);
}

QString FileDialogs::placeFor(const QString& name) {
    return QFileDialog::getSaveFileName(&window_, QObject::tr("Save the File"), name, {}, nullptr,
                                        optionsFor(usesQtDialogs_));
}

QString FileDialogs::placeForLog() {
    auto path = QFileDialog::getSaveFileName(&window_, QObject::tr("Save Log"), "corvane.log",
                                             QObject::tr("Text (*.log *.txt)"), nullptr, optionsFor(usesQtDialogs_));
    leadBackTo(window_);
    return path;
}

}  // namespace corvane
