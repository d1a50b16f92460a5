#include <QAccessible>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <set>

#include "WindowTest.h"
#include "text/Text.h"

namespace corvane::tests {

struct Access : WindowTest {
    /// What an operator can do something with.
    static bool isInteractive(const QWidget& widget) {
        static const char* const kinds[] = {"QAbstractButton", "QLineEdit",      "QComboBox",
                                            "QTextEdit",       "QPlainTextEdit", "QAbstractItemView"};
        const bool isOwn = !widget.objectName().startsWith("qt_") && !widget.inherits("QMenu") &&
                           !widget.inherits("QHeaderView") && !widget.inherits("QTableCornerButton") &&
                           !widget.parentWidget()->inherits("QComboBoxPrivateContainer");
        return isOwn && widget.isVisible() && widget.isEnabled() &&
               std::any_of(std::begin(kinds), std::end(kinds), [&](const char* kind) { return widget.inherits(kind); });
    }

    /// Presses Tab until the focus is back where it was.
    static std::set<const QWidget*> reachedByTab(QWidget& form) {
        constexpr int kMost = 60;
        std::set<const QWidget*> reached;
        QWidget* first = form.focusWidget();
        for (int i = 0; i < kMost; ++i) {
            reached.insert(form.focusWidget());
            QTest::keyClick(form.focusWidget(), Qt::Key_Tab);
            if (form.focusWidget() == first) return reached;
        }
        ADD_FAILURE() << form.objectName().toStdString() << ": Tab does not come round";
        return reached;
    }

    /// Each control has a name for a screen reader, and Tab leads to it (to one button of a group, whose others the
    /// arrows lead to).
    /// By keyboard, by screen reader and on a small screen.
    static void check(QWidget& form) {
        EXPECT_EQ(form.minimumSizeHint().expandedTo({632, 320}), QSize(632, 320)) << form.objectName().toStdString();
        if (!form.focusWidget()) QTest::keyClick(&form, Qt::Key_Tab);
        const auto reached = reachedByTab(form);
        for (const auto* widget : form.findChildren<QWidget*>()) {
            if (!isInteractive(*widget)) continue;
            const auto name = (form.objectName() + "." + widget->metaObject()->className() + "." + widget->objectName())
                                  .toStdString();
            auto* interface = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
            EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << name;
            bool isReached = reached.count(widget) > 0;
            for (const auto* other : widget->parentWidget()->findChildren<QRadioButton*>())
                isReached = isReached || (widget->inherits("QRadioButton") && reached.count(other) > 0);
            EXPECT_TRUE(isReached) << name << " is not reached by Tab";
        }
        for (auto* label : form.findChildren<QLabel*>(QRegularExpression("^lab"))) {
            const auto name = QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
            EXPECT_TRUE(label->text().isEmpty() || name == label->text()) << name.toStdString();
        }
    }

    static DialogAnswers::Answer checking(DialogAnswers::Answer then = [](QDialog& dialog) { dialog.reject(); }) {
        return [then = std::move(then)](QDialog& dialog) {
            check(dialog);
            then(dialog);
        };
    }
};

TEST_F(Access, ArrowsOnlyWalkAndTheDefaultStays) {
    press("optLine1");
    control<QWidget>("optLast").setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Right);  // a dialog would be unexpected
    EXPECT_EQ(choice(), "off file|,,");
    EXPECT_FALSE(control<QWidget>("cmdStartCheck").isEnabled());
    answers.expect("QFileDialog", [](QDialog& dialog) { dialog.reject(); });
    QTest::keyClick(&control<QWidget>("optFile"), Qt::Key_Space);
    pickImage();
    plug();
    answers.expect("frmQuery", [](QDialog& dialog) {
        reachedByTab(dialog);
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
        EXPECT_TRUE(dialog.findChild<QPushButton*>("cmdOK")->isDefault());
        EXPECT_FALSE(dialog.findChild<QPushButton*>("cmdCancel")->isDefault());
        dialog.reject();
    });
    press("cmdStartCheck");
}

TEST_F(Access, HasAKeyOfItsOwnForEachControlThatShows) {
    for (const char* line : {"optLine0", "optLine1"}) {
        press(line);
        std::map<QString, std::string> taken;
        const auto take = [&](const QString& caption) {
            const auto key = QKeySequence::mnemonic(caption).toString();
            EXPECT_FALSE(key.isEmpty()) << caption.toStdString();
            const auto [other, isNew] = taken.emplace(key, caption.toStdString());
            EXPECT_TRUE(isNew) << caption.toStdString() << " and " << other->second;
        };
        for (const auto* button : window->findChildren<QAbstractButton*>()) {
            if (button->isVisible() && !button->text().isEmpty()) take(button->text());
        }
        for (const auto* label : window->findChildren<QLabel*>()) {
            const auto* buddy = label->isVisible() ? label->buddy() : nullptr;
            if (buddy && (buddy->focusPolicy() & Qt::TabFocus)) take(label->text());
        }
        for (const auto* action : window->menuBar()->actions()) take(action->text());
    }
}

TEST_F(Access, LeadsToEveryControlAndNamesIt) {
    check(*window);
    press("optLine1");
    check(*window);
    answers.expect("frmConnection", checking());
    press("cmdOption");
    answers.expect("frmJobs", checking());
    control<QAction>("mnuJobs").trigger();
    frmRehearsal rehearsal;
    rehearsal.show();
    check(rehearsal);
    EXPECT_EQ(rehearsal.chosen().word, "healthy");
    rehearsal.findChildren<QRadioButton*>()[1]->click();
    EXPECT_EQ(rehearsal.chosen().word.toStdString(), "boot-loader");
    rehearsal.close();

    models::DeviceOptions options;
    options.password = "secret";
    options.baud = 115200;  // so that there is a scan to look at
    plug(options);
    bench.runtime.at(1000, [this] {
        activate();
        EXPECT_TRUE(control<QWidget>("frameComport").isVisible());
        check(*window);
    });
    pickImage(replaceAll(kImage, "0304F2", "0304F3"));
    const auto agree = checking([](QDialog& dialog) { DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK")); });
    answers.expect("frmQuery", agree);
    answers.expect("frmMessage", agree);
    answers.expect("frmMessage", agree);  // about the image
    answers.expect("frmPassword", checking());
    press("cmdStartCheck");
    EXPECT_TRUE(control<QWidget>("txtVerdict").isVisible());
    check(*window);
}

TEST_F(Access, FitsASmallScreenByScrollingToWhatHasTheFocus) {
    window->resize(640, 360);
    press("optLine1");
    press("cmdDetails");
    QCoreApplication::processEvents();
    EXPECT_EQ(window->size(), QSize(640, 360));
    for (const char* name : {"cmdLoadFile", "cmdSaveLog", "cmdForceISP", "cmdStartCheck"}) {
        auto& widget = control<QWidget>(name);
        widget.setFocus();
        QCoreApplication::processEvents();
        EXPECT_TRUE(window->rect().contains(QRect(widget.mapTo(window.get(), QPoint()), widget.size()))) << name;
        EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect()) << name;
    }
}

}  // namespace corvane::tests
