#include <QComboBox>
#include <QFileDialog>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>

#include "WindowTest.h"
#include "support/SignedSite.h"

namespace corvane::tests {

TEST_F(WindowTest, StartsWithEmptySettingsAndKeepsThem) {
    const auto type = [this](const QString& name, const QString& typed) {
        auto& field = control<QLineEdit>(name);
        field.selectAll();
        for (const auto character : typed) QTest::sendKeyEvent(QTest::Click, &field, Qt::Key_unknown, character, {});
    };
    EXPECT_EQ(choice(), "on last|,,");
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
    EXPECT_EQ(choice() + control<QLineEdit>("txtAccount0").text().toStdString(), "off last|,,J\xC3\xBCrgen");
    press("optLine0");
    bench.settings.isReadOnly = true;
    type("txtAccount1", "other");
    answers.expect("frmProblem", DialogAnswers::pressing("cmdOK"));
    window->close();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, TakesAGoodLocalFileAndRefusesABadOne) {
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

TEST_F(WindowTest, TakesAFileThatIsDroppedOnIt) {
    const auto drop = [this](const std::string& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
        QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(window.get(), &enter);
        QDropEvent dropped({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        if (enter.isAccepted()) QApplication::sendEvent(window.get(), &dropped);
        return enter.isAccepted();
    };
    const auto image = bench.folder.folder.file("dropped.hex", kImage);
    EXPECT_TRUE(drop(image));
    EXPECT_EQ(choice() + text("labFileName"), "off file|TARN-R200,V5.2R1,2024/01/31dropped.hex");
    bench.serial.list(1);
    press("optLast");
    bench.runtime.at(10, [&] { EXPECT_FALSE(drop(image)) << "during a run"; });
    press("cmdStartCheck");
    EXPECT_EQ(choice(), "off last|TARN-R200,V5.2R1,2024/01/31");
}

TEST_F(WindowTest, OffersTheFilesThatWereTakenLast) {
    const auto recent = [this] {
        auto& menu = control<QMenu>("mnuRecent");
        Q_EMIT menu.aboutToShow();
        return menu.actions();
    };
    press("optLine1");
    ASSERT_EQ(recent().size(), 1);
    EXPECT_FALSE(recent().front()->isEnabled());
    pickImage();
    const auto other = bench.folder.folder.file("R&D.hex", ":0400000001020304F2\n:00000001FF\n");
    answers.expect("QFileDialog", DialogAnswers::picking(other));
    press("cmdLoadFile");
    const auto files = recent();
    ASSERT_EQ(files.size(), 2);
    EXPECT_TRUE(files.front()->text().startsWith("&1 R&&D.hex in ")) << files.front()->text().toStdString();
    EXPECT_EQ(files.front()->toolTip().toStdString(), other);
    files.back()->trigger();
    EXPECT_EQ(text("labFileName") + text("labFileVersion"), "local.hexV5.2R1");
}

TEST_F(WindowTest, ShowsTheMemoryThatAnImageFillsAndComparesItWithTheDevice) {
    const std::string map =
        "12 bytes in 3 segments: 0x00000 to 0x00003, 4 bytes; a gap of 12 bytes; 0x00010 to 0x00013, 4 bytes; a gap of "
        "12 bytes; 0x00020 to 0x00023, 4 bytes.";
    pickImage();
    auto& view = control<QWidget>("picMemory");
    EXPECT_EQ(view.accessibleDescription().toStdString(), map);
    const auto picture = view.grab().toImage();
    const auto filled = view.palette().color(QPalette::Highlight).rgb();
    std::string cells;
    for (const int share : {2, 10, 18, 26, 34})
        cells += picture.pixel(picture.width() * share / 36, 4) == filled ? "#" : ".";
    EXPECT_EQ(cells, "#.#.#");
    press("optLast");
    press("optLine0");
    plug();
    offer();
    for (const auto& memory : {std::string(), map + "Memory map of the copy on this computer, r200.hex"}) {
        answers.expect("frmQuery", [&](QDialog& dialog) {
            const auto label = [&dialog](const char* name) { return dialog.findChild<QLabel*>(name)->text(); };
            EXPECT_EQ(label("labFrom") + label("labTo") + label("labStep"), "V5.1R23V5.2R1\u25b2 a newer version");
            const auto* shown = dialog.findChild<QWidget*>("picMemory");
            EXPECT_EQ(shown->isVisible(), !memory.empty());
            if (!memory.empty()) EXPECT_EQ((shown->accessibleDescription() + label("labMemory")).toStdString(), memory);
            answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
            DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
        });
        press("cmdStartCheck");
        press("optLine1");
    }
}

TEST_F(WindowTest, LogsAtTheEndAndCopiesAndSavesTheLog) {
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

TEST_F(WindowTest, SaysWhoVouchesForAnImage) {
    bench.keys.file("maker.pub", fakes::signedFile("maker.pub"));
    plug();
    offer();
    bench.reader.answers[site + "/firmware/firmware.inf"].content = fakes::signedFile("firmware.inf");
    bench.reader.answers[site + "/firmware/firmware.inf.minisig"].content = fakes::signedFile("good.minisig");
    answers.expect("frmQuery", [](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLabel*>("labVouched")->text(), "Signed by maker.");
        dialog.reject();
    });
    press("cmdStartCheck");
}

TEST_F(WindowTest, AsksHowTheSiteIsReached) {
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
        QTest::keyClick(dialog.findChild<QComboBox*>("cmbEncryption"), Qt::Key_End);
        DialogAnswers::press(*dialog.findChild<QWidget*>("chkAskVersion"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("chkSpareBattery"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdOption");
    const auto chosen = bench.settings.values;
    EXPECT_EQ(chosen, (std::map<std::string, std::string>{{"Corvane/FTP/AccessType", "2"},
                                                          {"Corvane/FTP/Encryption", "require"},
                                                          {"Corvane/FTP/Proxy", "proxy:3128"},
                                                          {"Corvane/Update/AskVersion", "False"},
                                                          {"Corvane/Update/SpareBattery", "False"}}));
    answers.expect("frmConnection", [this](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("txtProxy")->text(), "proxy:3128");
        dialog.findChild<QComboBox*>("cmbAccessType")->setCurrentIndex(1);
        window->closeFromOutside();
    });
    press("cmdOption");
    EXPECT_EQ(bench.settings.values, chosen);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, SaysAtItsStartWhichDevicesEarlierRunsLeftBehind) {
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

TEST_F(WindowTest, FindsOneOfManyImages) {
    plug();
    press("optLine1");
    std::string information;
    for (int i = 0; i < 200; ++i)
        information += "[PGM_" + std::to_string(i) + "]\nPRODUCT=TARN-R200\nVERSION=V5\nDESC=x\nFILE=/a.hex\n";
    bench.write("firmware.inf", information);
    bench.write("Download/a.hex", kImage);
    answers.expect("frmQuery", [](QDialog& dialog) {
        auto* list = dialog.findChild<QComboBox*>("cboROMs");
        EXPECT_EQ(list->currentText(), "PGM_0 - TARN-R200");
        QTest::keyClicks(dialog.findChild<QLineEdit*>("txtFind"), "pgm_12");
        EXPECT_EQ(list->count(), 11);
        EXPECT_EQ(list->currentText() + dialog.findChild<QPlainTextEdit*>("txtView")->toPlainText(), "");
        EXPECT_FALSE(dialog.findChild<QWidget*>("cmdOK")->isEnabled());
        list->setCurrentIndex(1);
        dialog.findChild<QLineEdit*>("txtFind")->clear();
        EXPECT_EQ(list->currentText() + QString::number(list->count()), "PGM_120 - TARN-R200200");
        dialog.reject();
    });
    press("cmdStartCheck");
}

TEST_F(WindowTest, StartsARehearsalAndSaysInItThatNoDeviceIsReal) {
    EXPECT_FALSE(control<QAction>("mnuRehearse").isEnabled());  // nobody has said how
    EXPECT_FALSE(control<QWidget>("labRehearsal").isVisible());
    window->close();
    QString problem;
    WindowOptions options;
    options.rehearsal = Rehearsal::watermark();
    options.remark = "off line";
    options.rehearse = [&] { return problem; };
    open(options);
    EXPECT_EQ(text("labStatus"), "off line");
    EXPECT_TRUE(control<QWidget>("labRehearsal").isVisible());
    EXPECT_EQ(text("labRehearsal"), "REHEARSAL: no real device");
    EXPECT_EQ(window->windowTitle(), "Corvane (rehearsal)");
    problem = "no such file";
    control<QAction>("mnuRehearse").trigger();
    EXPECT_EQ(text("labStatus"), "off line\nThe rehearsal does not start: no such file");
}

}  // namespace corvane::tests
