#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace corvane {

/// Answers the modal dialogs in the order in which they open, each as soon as it shows.
class DialogAnswers : public QObject {
public:
    using Answer = std::function<void(QDialog& dialog)>;

    DialogAnswers() { qApp->installEventFilter(this); }
    ~DialogAnswers() override { qApp->removeEventFilter(this); }

    /// For a dialog of that object name.
    void expect(const QString& name, Answer answer) { expected_.emplace_back(name, std::move(answer)); }
    bool isDone() const { return expected_.empty(); }

    /// A dialog that is not the next one expected; it is closed.
    std::function<void(const std::string& name)> onUnexpected;

    static void press(QWidget& button) { QTest::mouseClick(&button, Qt::LeftButton, {}, {8, button.height() / 2}); }

    static Answer pressing(const QString& button) {
        return [button](QDialog& dialog) { press(*dialog.findChild<QAbstractButton*>(button)); };
    }

    /// Types a path into the file dialog and confirms it.
    static Answer picking(const std::string& path) {
        return [path](QDialog& dialog) {
            auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
            name->setText(QString::fromStdString(path));
            QTest::keyClick(name, Qt::Key_Return);
        };
    }

private:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(object) : nullptr;
        if (dialog && dialog->isModal()) QTimer::singleShot(0, dialog, [this, dialog] { answer(*dialog); });
        return false;
    }

    void answer(QDialog& dialog) {
        if (expected_.empty() || expected_.front().first != dialog.objectName()) {
            if (onUnexpected) onUnexpected(dialog.objectName().toStdString());
            return dialog.reject();
        }
        const auto next = std::move(expected_.front().second);
        expected_.pop_front();
        next(dialog);
    }

    std::deque<std::pair<QString, Answer>> expected_;
};

}  // namespace corvane
