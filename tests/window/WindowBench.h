#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <QTimer>
#include <deque>
#include <functional>
#include <gtest/gtest.h>

#include "models/Flash.h"
#include "support/AppBench.h"
#include "window/frmCorvane.h"

namespace corvane {

/// Answers the modal dialogs in the order in which they open, each as soon as it shows. A dialog that nobody expected
/// fails the test and is rejected.
class DialogAnswers : public QObject {
public:
    using Answer = std::function<void(QDialog& dialog)>;

    DialogAnswers() { qApp->installEventFilter(this); }
    ~DialogAnswers() override { qApp->removeEventFilter(this); }

    /// For a dialog of that object name; what the answer leaves open is closed.
    void expect(const QString& name, Answer answer) { expected_.push_back({name, std::move(answer)}); }
    bool isDone() const { return expected_.empty(); }
    QStringList seen;

private:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(object) : nullptr;
        if (dialog && dialog->isModal()) QTimer::singleShot(0, dialog, [this, dialog] { answer(*dialog); });
        return false;
    }

    void answer(QDialog& dialog) {
        seen.append(dialog.objectName());
        if (expected_.empty() || expected_.front().first != dialog.objectName()) {
            ADD_FAILURE() << "unexpected dialog " << dialog.objectName().toStdString();
            return dialog.reject();
        }
        const auto next = std::move(expected_.front().second);
        expected_.pop_front();
        next(dialog);
    }

    std::deque<std::pair<QString, Answer>> expected_;
};

/// The real window over fakes of everything that it stands on, in virtual time.
class WindowTest : public ::testing::Test {
protected:
    static constexpr char kImage[] =
        "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
        ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:00000001FF\n";

    WindowTest() { open(); }
    ~WindowTest() override {
        if (window) window->close();
        EXPECT_TRUE(answers.isDone()) << "a dialog that was expected did not open";
    }

    void open() {
        window = std::make_unique<frmCorvane>(bench.platform(), WindowOptions{true});
        window->show();
        QCoreApplication::processEvents();
    }

    models::Device& plug(models::DeviceOptions options = {}, std::int16_t number = 1) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        bench.serial.plug(number, *devices.back());
        return *devices.back();
    }

    template <typename Control>
    Control& control(const QString& name) const {
        auto* found = window->findChild<Control*>(name);
        if (!found) throw std::runtime_error("no control " + name.toStdString());
        return *found;
    }

    std::string text(const QString& label) const { return control<QLabel>(label).text().toStdString(); }
    std::string log() const { return control<QPlainTextEdit>("txtInfo").toPlainText().toStdString(); }

    static void press(QWidget& button) { QTest::mouseClick(&button, Qt::LeftButton, {}, {8, button.height() / 2}); }
    void press(const QString& name) const { press(control<QAbstractButton>(name)); }

    static DialogAnswers::Answer pressing(const QString& button) {
        return [button](QDialog& dialog) { press(*dialog.findChild<QAbstractButton*>(button)); };
    }

    /// Types a path into the file dialog and confirms it.
    static DialogAnswers::Answer picking(const std::string& path) {
        return [path](QDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
            QTest::keyClick(dialog.findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
        };
    }

    /// Off line with the image picked.
    void pickImage() {
        press("optLine1");
        answers.expect("QFileDialog", picking(bench.folder.folder.file("local.hex", kImage)));
        press("optFile");
    }

    /// What can be used, by the names of the controls.
    std::string enabled() const {
        std::string names;
        for (const char* name :
             {"cmdStartCheck", "cmdForceISP", "cmdCancel", "cmdOption", "optLine0", "optLine1", "txtServer",
              "txtAccount0", "txtAccount1", "optFile", "optLast", "cmdLoadFile", "cmdSaveLog"}) {
            if (control<QWidget>(name).isEnabled()) names += std::string(name) + " ";
        }
        return names;
    }

    std::string memoryFault() {
        const auto fault = models::comparison(devices.front()->flash(), models::imageOf(kImage));
        return fault == "memory equals image" ? "" : fault;
    }

    fakes::AppBench bench;
    DialogAnswers answers;
    std::vector<std::unique_ptr<models::Device>> devices;
    std::unique_ptr<frmCorvane> window;
};

}  // namespace corvane
