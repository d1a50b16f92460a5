#include <QComboBox>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>

#include "WindowTest.h"

namespace corvane {
namespace {

class Window : public WindowTest {
protected:
    /// "line source|program,version,date" as the window shows them.
    std::string choice() const {
        std::string shown = control<QRadioButton>("optLine1").isChecked() ? "off " : "on ";
        shown += control<QRadioButton>("optFile").isChecked() ? "file" : "last";
        return shown + "|" + text("labFilePGM") + "," + text("labFileVersion") + "," + text("labFileDate");
    }

    void type(const QString& name, const QString& typed) {
        auto& field = control<QLineEdit>(name);
        field.selectAll();
        for (const auto character : typed) QTest::sendKeyEvent(QTest::Click, &field, Qt::Key_unknown, character, {});
    }
};

TEST_F(Window, StartsWithEmptySettingsOnLine) {
    EXPECT_EQ(choice(), "on last|,,");
    EXPECT_EQ(control<QLineEdit>("txtServer").text(), "ftp.corvane.example");
    EXPECT_EQ(control<QLineEdit>("txtAccount0").text() + control<QLineEdit>("txtAccount1").text(), "");
    EXPECT_EQ(control<QLineEdit>("txtAccount1").echoMode(), QLineEdit::Password);
    EXPECT_EQ(enabled(),
              "cmdStartCheck cmdForceISP cmdOption optLine0 optLine1 txtServer txtAccount0 txtAccount1 cmdCopyLog "
              "cmdSaveLog ");
    EXPECT_EQ(text("labVersion"), "V1.0R0");
    EXPECT_EQ(window->windowTitle(), "Corvane");
}

TEST_F(Window, KeepsItsSettings) {
    type("txtServer", "fw.example:2121");
    type("txtAccount0", "J\u00fcrgen");
    type("txtAccount1", "p@ss");
    press("optLine1");
    window->close();
    EXPECT_EQ(bench.settings.values, (std::map<std::string, std::string>{{"Corvane/FTP/OffLine", "True"},
                                                                         {"Corvane/FTP/Password", "p@ss"},
                                                                         {"Corvane/FTP/Server", "fw.example:2121"},
                                                                         {"Corvane/FTP/UserName", "J\xC3\xBCrgen"}}));
    open();
    EXPECT_EQ(choice(), "off last|,,");
    EXPECT_EQ(control<QLineEdit>("txtServer").text(), "fw.example:2121");
    EXPECT_EQ(control<QLineEdit>("txtAccount0").text(), "J\u00fcrgen");
}

TEST_F(Window, SaysWhenTheSettingsCannotBeSaved) {
    bench.settings.isReadOnly = true;
    answers.expect("frmProblem", DialogAnswers::pressing("cmdOK"));
    window->close();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Window, TakesAGoodLocalFileAndRefusesABadOne) {
    press("optLine1");
    answers.expect("QFileDialog", [](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Open Firmware File");
        dialog.reject();
    });
    press("optFile");
    EXPECT_EQ(choice(), "off file|,,");
    EXPECT_FALSE(control<QWidget>("cmdStartCheck").isEnabled());
    pickImage();
    EXPECT_EQ(choice(), "off file|TARN-R200,V5.2R1,2024/01/31");
    EXPECT_TRUE(control<QWidget>("cmdStartCheck").isEnabled());
    answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.file("bad.hex", "no record\n")));
    press("cmdLoadFile");
    EXPECT_EQ(choice(), "off last|Invalid File Format!!,,");
    EXPECT_TRUE(control<QWidget>("cmdStartCheck").isEnabled());
    pickImage();
    press("optLine0");
    EXPECT_EQ(choice(), "on last|TARN-R200,V5.2R1,2024/01/31");
    EXPECT_FALSE(control<QWidget>("cmdLoadFile").isEnabled());
}

TEST_F(Window, TakesAFileThatIsDroppedOnIt) {
    const auto drop = [this](const std::string& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
        QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(window.get(), &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent dropped({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(window.get(), &dropped);
        return true;
    };
    const auto image = bench.folder.folder.file("dropped.hex", kImage);
    EXPECT_TRUE(drop(image));
    EXPECT_EQ(choice(), "off file|TARN-R200,V5.2R1,2024/01/31");
    EXPECT_EQ(text("labFileName"), "dropped.hex");
    bench.serial.list(1);
    press("optLast");
    bench.runtime.at(10, [&] { EXPECT_FALSE(drop(image)) << "during a run"; });
    press("cmdStartCheck");
    EXPECT_EQ(choice(), "off last|TARN-R200,V5.2R1,2024/01/31");
}

TEST_F(Window, LogsAtTheEndScrollsThereAndDropsTheOldest) {
    auto& pane = control<QPlainTextEdit>("txtInfo");
    auto* log = dynamic_cast<Log*>(&pane);
    log->ShowInfo("first\r\n\xE9nd");
    EXPECT_EQ(pane.toPlainText(), "first\n\u00e9nd");
    pane.moveCursor(QTextCursor::Start);
    for (int i = 0; i < 1700; ++i) log->ShowInfo("12345678\r\n");
    EXPECT_EQ(pane.textCursor().position(), pane.document()->characterCount() - 1);
    EXPECT_TRUE(pane.toPlainText().startsWith("678\n12345678\n"));  // 765 bytes went at the front
    EXPECT_LT(pane.toPlainText().size(), 16384);
    press("cmdCopyLog");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), pane.toPlainText());
}

TEST_F(Window, SavesTheLog) {
    dynamic_cast<Log&>(control<QPlainTextEdit>("txtInfo")).ShowInfo("one\r\nd\xE9j\xE0\r\n");
    answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.at("run.log")));
    press("cmdSaveLog");
    EXPECT_EQ(fakes::ScratchFolder::content(bench.folder.folder.at("run.log")), "one\nd\xC3\xA9j\xC3\xA0\n");
    answers.expect("QFileDialog", DialogAnswers::picking("/dev/null/run.log"));
    activate();
    QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(text("labStatus").starts_with("The log could not be saved: ")) << text("labStatus");
}

TEST_F(Window, AsksHowTheSiteIsReached) {
    answers.expect("frmConnection", [](QDialog& dialog) {
        auto* link = dialog.findChild<QComboBox*>("cmbAccessType");
        auto* proxy = dialog.findChild<QLineEdit*>("txtProxy");
        EXPECT_EQ(link->currentText(), "Default");
        EXPECT_FALSE(proxy->isEnabled());
        QTest::keyClick(link, Qt::Key_Down);
        EXPECT_FALSE(proxy->isEnabled());
        QTest::keyClick(link, Qt::Key_Down);
        EXPECT_EQ(link->currentText(), "Proxy");
        EXPECT_TRUE(proxy->isEnabled());
        QTest::keyClicks(proxy, "proxy:3128");
        DialogAnswers::press(*dialog.findChild<QWidget*>("chkAskVersion"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdOption");
    EXPECT_EQ(bench.settings.values, (std::map<std::string, std::string>{{"Corvane/FTP/AccessType", "2"},
                                                                         {"Corvane/FTP/Proxy", "proxy:3128"},
                                                                         {"Corvane/Update/AskVersion", "False"}}));
    answers.expect("frmConnection", [](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("txtProxy")->text(), "proxy:3128");
        dialog.findChild<QComboBox*>("cmbAccessType")->setCurrentIndex(1);
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdCancel"));
    });
    press("cmdOption");
    EXPECT_EQ(bench.settings.values["Corvane/FTP/AccessType"], "2");
}

TEST_F(Window, IsClosedFromOutsideAlsoWhileADialogIsOpen) {
    answers.expect("frmConnection", [this](QDialog&) { window->closeFromOutside(); });
    press("cmdOption");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(bench.settings.values["Corvane/FTP/OffLine"], "False");
}

TEST_F(Window, SaysAtItsStartWhichDeviceAnEarlierRunLeftBehind) {
    RunJournal(bench.folder).add({"2026-11-24 14:02:07", "COM3", "TARN-R200 V5.1R23", "/tmp/a.hex"});
    window->close();
    open();
    EXPECT_NE(text("labStatus").find("COM3"), std::string::npos) << text("labStatus");
}

TEST_F(Window, FindsOneOfTenThousandImages) {
    plug();
    press("optLine1");
    std::string information;
    for (int i = 0; i < 10000; ++i) {
        information += "[PGM_" + std::to_string(i) + "]\nPRODUCT=TARN-R200\nVERSION=V5.1R" + std::to_string(i) +
                       "\nDESC=x\nFILE=/a.hex\n";
    }
    bench.write("firmware.inf", information);
    bench.write("Download/a.hex", kImage);
    answers.expect("frmQuery", [this](QDialog& dialog) {
        auto* list = dialog.findChild<QComboBox*>("cboROMs");
        EXPECT_EQ(list->count(), 10000);
        QTest::keyClicks(dialog.findChild<QLineEdit*>("txtFind"), "pgm_9876");
        EXPECT_EQ(list->count(), 1);
        EXPECT_EQ(list->currentText(), "PGM_9876 - TARN-R200");
        QTest::keyClicks(dialog.findChild<QLineEdit*>("txtFind"), "nothing");
        EXPECT_EQ(list->count(), 0);
        EXPECT_FALSE(dialog.findChild<QWidget*>("cmdOK")->isEnabled());
        dialog.findChild<QLineEdit*>("txtFind")->clear();
        QTest::keyClicks(dialog.findChild<QLineEdit*>("txtFind"), "pgm_9876");
        answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdStartCheck");
    EXPECT_NE(log().find("Version   : V5.1R9876\n"), std::string::npos);
    EXPECT_EQ(bench.settings.values["Corvane/Query/LastROM"], "PGM_9876");
}

TEST_F(Window, IsWorkedByKeyboardAlone) {
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

TEST_F(Window, HasAKeyOfItsOwnForEachControlThatShows) {
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

TEST_F(Window, TellsAScreenReaderWhatEachControlIs) {
    const auto check = [](const QWidget& form) {
        for (const auto* widget : form.findChildren<QWidget*>()) {
            if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith("qt_")) continue;
            if (widget->inherits("QComboBoxPrivateContainer") || widget->inherits("QListView")) continue;
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
        }
    };
    check(*window);
    answers.expect("frmConnection", [&](QDialog& dialog) {
        check(dialog);
        dialog.reject();
    });
    press("cmdOption");
    plug();
    pickImage();
    answers.expect("frmQuery", [&](QDialog& dialog) {
        check(dialog);
        dialog.reject();
    });
    press("cmdStartCheck");
}

TEST_F(Window, FitsA800By600Screen) {
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
