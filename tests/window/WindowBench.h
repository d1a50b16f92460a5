#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <stdexcept>

#include "DialogAnswers.h"
#include "support/AppBench.h"
#include "window/frmCorvane.h"

namespace corvane {

/// The real window over fakes of everything that it stands on, in virtual time.
struct WindowBench {
    static constexpr auto& kImage = fakes::kImage;

    /// A sound image of so many records, a byte in each, and the end record.
    static std::string imageOf(unsigned records) {
        std::string image = "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n";
        for (unsigned i = 0; i < records; ++i) image += fakes::hexRecord(i, {0});
        return image + ":00000001FF\n";
    }

    ~WindowBench() {
        if (window) window->close();
    }

    frmCorvane& open(WindowOptions options = {}) {
        options.usesQtDialogs = true;
        window = std::make_unique<frmCorvane>(bench.platform(), options);
        window->show();
        activate();
        return *window;
    }

    /// Shortcuts work in the active window alone, and a dialog that has closed leaves none behind.
    void activate() {
        window->activateWindow();
        QCoreApplication::processEvents();
    }

    models::Device& plug(models::DeviceOptions options = {}, std::int16_t number = 1) {
        return bench.plug(std::move(options), number);
    }

    template <typename Control>
    Control& control(const QString& name) const {
        auto* found = window->findChild<Control*>(name);
        if (!found) throw std::runtime_error("no control " + name.toStdString());
        return *found;
    }

    std::string text(const QString& label) const { return control<QLabel>(label).text().toStdString(); }
    std::string log() const { return control<QPlainTextEdit>("txtInfo").toPlainText().toStdString(); }
    void press(const QString& name) const { DialogAnswers::press(control<QWidget>(name)); }

    /// Off line with this image picked.
    void pickImage(const std::string& content = kImage) {
        press("optLine1");
        answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.file("local.hex", content)));
        press("optFile");
        activate();
    }

    /// The selection and its question are answered with OK.
    void agree() {
        answers.expect("frmQuery", DialogAnswers::pressing("cmdOK"));
        answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
    }

    fakes::AppBench bench;
    DialogAnswers answers;
    std::unique_ptr<frmCorvane> window;
};

}  // namespace corvane
