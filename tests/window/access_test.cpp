#include <QAccessible>
#include <QComboBox>
#include <QMenuBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <set>

#include "WindowTest.h"
#include "text/Text.h"
#include "window/rehearsal/frmRehearsal.h"

namespace corvane {
namespace {

class Access : public WindowTest {
protected:
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
    static void check(QWidget& form) {
        if (!form.focusWidget()) QTest::keyClick(&form, Qt::Key_Tab);
        const auto reached = reachedByTab(form);
        const auto* group = static_cast<QRadioButton*>(nullptr);
        bool isGroupReached = true;
        int count = 0;
        for (const auto* widget : form.findChildren<QWidget*>()) {
            if (!isInteractive(*widget)) continue;
            ++count;
            const auto name = (form.objectName() + "." + widget->metaObject()->className() + "." + widget->objectName())
                                  .toStdString();
            EXPECT_FALSE(widget->objectName().isEmpty()) << name;
            auto* interface = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
            EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << name;
            const auto* radio = qobject_cast<const QRadioButton*>(widget);
            if (!radio) {
                EXPECT_TRUE(reached.count(widget)) << name << " is not reached by Tab";
            } else {
                if (!group || group->parentWidget() != radio->parentWidget()) {
                    EXPECT_TRUE(isGroupReached) << name;
                    isGroupReached = false;
                    group = radio;
                }
                isGroupReached = isGroupReached || reached.count(radio);
            }
        }
        for (auto* label : form.findChildren<QLabel*>(QRegularExpression("^lab"))) {
            const auto name = QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
            EXPECT_TRUE(label->text().isEmpty() || name == label->text()) << name.toStdString();
        }
        EXPECT_TRUE(isGroupReached) << form.objectName().toStdString();
        EXPECT_GT(count, 0) << form.objectName().toStdString();
    }

    static DialogAnswers::Answer checking(DialogAnswers::Answer then = [](QDialog& dialog) { dialog.reject(); }) {
        return [then = std::move(then)](QDialog& dialog) {
            check(dialog);
            then(dialog);
        };
    }
};

TEST_F(Access, IsWorkedByKeyboardAlone) {
    control<QWidget>("optLine0").setFocus();
    QStringList order;
    for (int i = 0; i < 12; ++i) {
        order.append(window->focusWidget()->objectName());
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        if (window->focusWidget()->objectName() == order.front()) break;
    }
    EXPECT_EQ(
        order.join(' ').toStdString(),
        "optLine0 cmdOption txtServer txtAccount0 txtAccount1 cmdStartCheck cmdForceISP txtInfo cmdCopyLog cmdSaveLog");
    QTest::keyClick(window.get(), Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(window->focusWidget()->objectName(), "txtServer");
    control<QWidget>("optLine0").setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Right);
    EXPECT_EQ(choice(), "off last|,,");
    answers.expect("QFileDialog", [](QDialog& dialog) { dialog.reject(); });
    control<QWidget>("optLast").setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Down);
    EXPECT_EQ(choice(), "off file|,,");
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
    rehearsal.close();

    models::DeviceOptions options;
    options.password = "secret";
    plug(options);
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

TEST_F(Access, LeadsToThePortsOfAScan) {
    models::DeviceOptions silent;
    silent.kind = models::Kind::silent;
    plug(silent, 2);
    plug(silent, 3);
    pickImage();
    bench.runtime.at(1000, [this] {
        activate();
        check(*window);
        press("cmdCancel");
    });
    press("cmdStartCheck");
}

TEST_F(Access, FitsA800By600Screen) {
    window->resize(800, 600);
    press("optLine1");
    QCoreApplication::processEvents();
    EXPECT_EQ(window->size(), QSize(800, 600));
    for (const char* name : {"cmdStartCheck", "cmdCancel", "labFileDate", "cmdSaveLog", "labVersion"}) {
        const auto& widget = control<QWidget>(name);
        EXPECT_TRUE(window->rect().contains(QRect(widget.mapTo(window.get(), QPoint()), widget.size()))) << name;
        EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect()) << name;
    }
}

}  // namespace
}  // namespace corvane
