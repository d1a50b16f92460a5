#include <QComboBox>
#include <QFileDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>

#include "WindowTest.h"

namespace corvane {
namespace {

class Window : public WindowTest {
protected:
    void type(const QString& name, const QString& typed) {
        auto& field = control<QLineEdit>(name);
        field.selectAll();
        for (const auto character : typed) QTest::sendKeyEvent(QTest::Click, &field, Qt::Key_unknown, character, {});
    }
};

TEST_F(Window, StartsWithEmptySettingsAndKeepsThem) {
    EXPECT_EQ(choice(), "on last|,,");
    EXPECT_EQ(control<QLineEdit>("txtServer").text(), "ftp.corvane.example");
    EXPECT_EQ(control<QLineEdit>("txtAccount1").echoMode(), QLineEdit::Password);
    EXPECT_EQ(enabled(),
              "cmdStartCheck cmdForceISP cmdOption optLine0 optLine1 txtServer txtAccount0 txtAccount1 cmdCopyLog "
              "cmdSaveLog ");
    EXPECT_EQ(text("labVersion"), "V1.0R0");
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
    EXPECT_EQ(control<QLineEdit>("txtServer").text() + control<QLineEdit>("txtAccount0").text(),
              "fw.example:2121J\u00fcrgen");
    press("optLine0");
    bench.settings.isReadOnly = true;
    type("txtAccount1", "other");
    answers.expect("frmProblem", DialogAnswers::pressing("cmdOK"));
    window->close();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Window, TakesAGoodLocalFileAndRefusesABadOne) {
    press("optLine1");
    answers.expect("QFileDialog", [](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Open Firmware File");
        EXPECT_EQ(dialog.findChild<QComboBox*>("fileTypeCombo")->currentText(), "Intel HEX (*.Hex)");
        EXPECT_TRUE(dynamic_cast<QFileDialog&>(dialog).nameFilters().front().contains(" *.hex *.HEX "));
        dialog.reject();
    });
    press("optFile");
    EXPECT_EQ(choice() + text("labFileStep"), "off file|,,Choose a file to install.");
    EXPECT_FALSE(control<QWidget>("cmdStartCheck").isEnabled());
    pickImage();
    EXPECT_EQ(choice(), "off file|TARN-R200,V5.2R1,2024/01/31");
    EXPECT_TRUE(control<QWidget>("cmdStartCheck").isEnabled());
    answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.file("bad.hex", "no record\n")));
    press("cmdLoadFile");
    EXPECT_EQ(choice() + "|" + text("labNotice"), "off file|TARN-R200,V5.2R1,2024/01/31|bad.hex cannot be installed.");
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

TEST_F(Window, LogsAtTheEndDropsTheOldestAndSavesTheRest) {
    auto& pane = control<QPlainTextEdit>("txtInfo");
    auto* log = dynamic_cast<Log*>(&pane);
    pane.moveCursor(QTextCursor::Start);
    for (int i = 0; i < 1700; ++i) log->ShowInfo("12345678\r\n");
    EXPECT_EQ(pane.textCursor().position(), pane.document()->characterCount() - 1);
    EXPECT_TRUE(pane.toPlainText().startsWith("678\n12345678\n"));  // 765 bytes went at the front
    log->clear();
    log->ShowInfo("one\r\nd\xE9j\xE0\r\n");
    press("cmdCopyLog");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "one\nd\u00e9j\u00e0\n");
    answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.at("run.log")));
    press("cmdSaveLog");
    EXPECT_EQ(fakes::ScratchFolder::content(bench.folder.folder.at("run.log")), "one\nd\xC3\xA9j\xC3\xA0\n");
    answers.expect("QFileDialog", DialogAnswers::picking("/dev/null/run.log"));
    activate();
    QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(text("labStatus").starts_with("The log could not be saved: ")) << text("labStatus");
}

TEST_F(Window, AsksHowTheSiteIsReached) {
    bench.asksAfterwards(true);
    answers.expect("frmConnection", [](QDialog& dialog) {
        auto* link = dialog.findChild<QComboBox*>("cmbAccessType");
        auto* proxy = dialog.findChild<QLineEdit*>("txtProxy");
        std::string links;
        for (int i = 0; i < 3; ++i) {
            links += link->currentText().toStdString() + (proxy->isEnabled() ? "+ " : "- ");
            QTest::keyClick(link, Qt::Key_Down);
        }
        EXPECT_EQ(links, "Default- Direct- Proxy+ ");
        QTest::keyClicks(proxy, "proxy:3128");
        DialogAnswers::press(*dialog.findChild<QWidget*>("chkAskVersion"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdOption");
    const auto chosen = bench.settings.values;
    EXPECT_EQ(chosen, (std::map<std::string, std::string>{{"Corvane/FTP/AccessType", "2"},
                                                          {"Corvane/FTP/Proxy", "proxy:3128"},
                                                          {"Corvane/Update/AskVersion", "False"}}));
    answers.expect("frmConnection", [](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("txtProxy")->text(), "proxy:3128");
        dialog.findChild<QComboBox*>("cmbAccessType")->setCurrentIndex(1);
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdCancel"));
    });
    press("cmdOption");
    EXPECT_EQ(bench.settings.values, chosen);
    answers.expect("frmConnection", [this](QDialog&) { window->closeFromOutside(); });
    press("cmdOption");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Window, SaysAtItsStartWhichDevicesEarlierRunsLeftBehind) {
    RunJournal journal(bench.folder, bench.files, bench.processes);
    const auto image = bench.folder.folder.file("a.hex", kImage);
    EXPECT_EQ(journal.begin({"2026-11-24 14:02:07", "COM3", "TARN-<b>R200</b> V5.1R23", image}, false), "");
    EXPECT_EQ(journal.leave(), "");
    open();
    EXPECT_EQ(text("labNotice"), "A device was left in its boot loader, without working firmware.");
    EXPECT_TRUE(verdict().starts_with("2026-11-24 14:02: COM3, TARN-<b>R200</b> V5.1R23, a.hex\n")) << verdict();
    const auto& rescue = control<QPushButton>("cmdForceISP");
    EXPECT_TRUE(rescue.isDefault() && rescue.hasFocus());
    EXPECT_EQ(rescue.text() + rescue.accessibleName(), "&Rescue with a.hexRescue with a.hex");
    answers.expect("frmForget", [](QDialog& dialog) {
        EXPECT_TRUE(dialog.findChild<QPushButton*>("cmdCancel")->isDefault());
        dialog.reject();
    });
    press("cmdForget");
    EXPECT_EQ(journal.left().size(), 1U);
    bench.files.failure = "no room";
    answers.expect("frmForget", DialogAnswers::pressing("cmdOK"));
    press("cmdForget");
    EXPECT_EQ(text("labStatus"), "The journal " + journal.path() + " could not be written: no room.");
    bench.files.failure.clear();
    answers.expect("frmForget", DialogAnswers::pressing("cmdOK"));
    press("cmdForget");
    EXPECT_EQ(journal.left().size(), 0U);
    EXPECT_TRUE(control<QPushButton>("cmdForget").isHidden());
    EXPECT_EQ(text("labNotice"), "Plug in your device.");
}

TEST_F(Window, FindsOneOfManyImages) {
    plug();
    press("optLine1");
    std::string information;
    for (int i = 0; i < 200; ++i)
        information += "[PGM_" + std::to_string(i) + "]\nPRODUCT=TARN-R200\nVERSION=V5\nDESC=x\nFILE=/a.hex\n";
    bench.write("firmware.inf", information);
    bench.write("Download/a.hex", kImage);
    answers.expect("frmQuery", [this](QDialog& dialog) {
        auto* list = dialog.findChild<QComboBox*>("cboROMs");
        const auto* button = dialog.findChild<QWidget*>("cmdOK");
        EXPECT_EQ(list->currentText(), "PGM_0 - TARN-R200");
        QTest::keyClicks(dialog.findChild<QLineEdit*>("txtFind"), "pgm_12");
        EXPECT_EQ(list->count(), 11);
        EXPECT_EQ(list->currentText() + dialog.findChild<QPlainTextEdit*>("txtView")->toPlainText(), "");
        EXPECT_FALSE(button->isEnabled());
        list->setCurrentIndex(1);
        dialog.findChild<QLineEdit*>("txtFind")->clear();
        EXPECT_EQ(list->currentText() + QString::number(list->count()), "PGM_120 - TARN-R200200");
        answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdStartCheck");
    EXPECT_EQ(bench.settings.values["Corvane/Query/LastROM"], "PGM_120");
}

}  // namespace
}  // namespace corvane
