#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QTableWidget>

#include "WindowTest.h"
#include "text/Text.h"

namespace corvane::tests {

TEST_F(WindowTest, CarriesADeviceThroughAWholeUpdate) {
    plug();
    const auto image = imageOf(480);
    pickImage(image);
    const auto idle = enabled();
    agree();
    std::vector<std::string> seen;
    const auto look = [&] {
        seen.push_back(enabled() + "|" + text("labNotice") + "|" + text("labPhase").substr(0, 17) + "|" +
                       window->windowTitle().toStdString());
    };
    when("Scan by 19200,N,8,1", look);
    when("Programming...", [&] {
        EXPECT_EQ(pointer(), Qt::WaitCursor);
        EXPECT_EQ(text("labDevice"), "COM1: TARN-R200 V5.1R23");
        bench.runtime.at(bench.runtime.ms() + 2000, [&] {
            look();
            EXPECT_EQ(control<QProgressBar>("pbProgram").text(), "55 %");
        });
    });
    press("cmdStartCheck");
    EXPECT_TRUE(log().ends_with("\n[ISP Mode]\nErase Firmware... < OK\nProgramming... < OK\nUpdate Finish\n")) << log();
    EXPECT_EQ(bench.memoryFault(image), "");
    EXPECT_EQ(
        seen,
        (std::vector<std::string>{
            "cmdCancel |Nothing on the device has changed yet.|Looking for the d|Looking for the device - Corvane",
            "|Do not unplug the device, and do not switch it or this computer off.|Programming: 211 |55 % "
            "Programming - Corvane"}));
    EXPECT_EQ(enabled(), idle);
    EXPECT_EQ(pointer(), Qt::ArrowCursor);
    EXPECT_EQ(window->windowTitle() + control<QProgressBar>("pbProgram").text(), "Corvane100 %");
    EXPECT_EQ(window->focusWidget()->objectName(), "labNotice");  // where a screen reader then reads
    EXPECT_EQ(text("labNotice"), "The device is updated.");
    EXPECT_NE(verdict().find("It is safe to unplug the device."), std::string::npos) << verdict();
}

TEST_F(WindowTest, SavesAReportOfARunThatFailed) {
    auto& offer = control<QPushButton>("cmdReport");
    EXPECT_FALSE(offer.isVisible() || control<QAction>("mnuSaveReport").isEnabled());
    plug({.faults = {"erase-nakx*"}});
    pickImage();
    agree();
    press("cmdStartCheck");
    ASSERT_TRUE(offer.isVisible() && control<QAction>("mnuSaveReport").isEnabled());
    const auto path = bench.folder.folder.at("failed.corvane-report");
    answers.expect("frmReport", [](QDialog& box) {
        EXPECT_NE(dynamic_cast<QMessageBox&>(box).informativeText().indexOf("No password is in it."), -1);
        DialogAnswers::press(*box.findChild<QWidget*>("cmdOK"));
    });
    answers.expect("QFileDialog", DialogAnswers::picking(path));
    press("cmdReport");
    EXPECT_EQ(readFile(path).substr(0, 2), "PK");
    EXPECT_NE(text("labStatus").find("The report lies in " + path), std::string::npos) << text("labStatus");
    activate();
    answers.expect("frmManual", DialogAnswers::pressing("cmdCancel"));
    QTest::keyClick(window.get(), Qt::Key_F1);
}

TEST_F(WindowTest, EndsWhenOneOfItsQuestionsIsAnsweredWithCancel) {
    plug();
    pickImage();
    answers.expect("frmQuery", [this](QDialog& dialog) {
        EXPECT_EQ(pointer(), Qt::ArrowCursor);
        EXPECT_EQ(dialog.findChild<QPlainTextEdit*>("txtView")->toPlainText().toStdString(),
                  "[FTP Site]\nROM Number: TARN-R200\nProduct   : TARN-R200\nVersion   : V5.2R1\n\n"
                  "[Update Information]\nTARN-R200 V5.2R1(2024/01/31)\n");
        answers.expect("frmMessage", [](QDialog& box) {
            EXPECT_EQ(dynamic_cast<QMessageBox&>(box).text().toStdString(),
                      "Do you want to UPDATE firmware to \"TARN-R200\"?\n"
                      "Warning: firmware update incorrectly will damage the unit!");
            EXPECT_EQ(box.windowTitle() + box.focusWidget()->objectName(), "CorvanecmdOK");
            DialogAnswers::press(*box.findChild<QWidget*>("cmdCancel"));
        });
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
        EXPECT_TRUE(dialog.isVisible());
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdCancel"));
    });
    press("cmdStartCheck");
    EXPECT_EQ(text("labFileStep"), "from V5.1R23 to V5.2R1, a newer version");
    EXPECT_EQ(text("labNotice"), "The device was not changed.");
}

TEST_F(WindowTest, ShowsThePortsDuringAScanAndJumpsToTheOneThatIsClicked) {
    plug({.kind = models::Kind::silent}, 2);
    plug({.kind = models::Kind::silent}, 3);
    plug({}, 5);
    bench.serial.list(17);
    bench.serial.list(4);
    bench.serial.control.markBusy(4);
    pickImage();
    bench.runtime.at(1000, [this] {
        EXPECT_TRUE(control<QWidget>("frameComport").isVisible());
        EXPECT_FALSE(control<QWidget>("cmdComport0").isVisible());  // the order's empty entry
        std::string buttons;
        for (int i = 1; i < 6; ++i) {
            const auto& button = control<QAbstractButton>("cmdComport" + QString::number(i));
            buttons += button.text().toStdString() + (button.isEnabled() ? "+ " : "- ");
        }
        EXPECT_EQ(buttons, "COM2- COM3+ COM4+ COM5+ COM17 (not scanned)- ");
        EXPECT_EQ(text("labTrying") + text("labStatus"), "Trying COM2 at 19200,N,8,1");
        press("cmdComport3");
    });
    answers.expect("frmQuery", DialogAnswers::pressing("cmdCancel"));
    std::string said;
    when("COM4 ... < NG\nOpen COM5 ... < OK\n   Scan by 19200,N,8,1", [&] { said = text("labStatus"); });
    press("cmdStartCheck");
    EXPECT_EQ(said, "COM4 (/dev/fake4) is in use by another program. Close that and start again.");
    EXPECT_FALSE(control<QWidget>("frameComport").isVisible());
}

TEST_F(WindowTest, MovesThePanelWhenThereAreMorePortsThanFit) {
    for (std::int16_t port = 1; port <= 16; ++port) plug({.kind = models::Kind::silent}, port);
    pickImage();
    bench.runtime.at(1000, [this] {
        for (const char* name : {"cmdComport16", "cmdComport1"}) {  // to the end, and from its start again
            const auto& button = control<QWidget>(name);
            EXPECT_TRUE(button.visibleRegion().isEmpty()) << name;
            for (int i = 0; i < 16 && button.visibleRegion().isEmpty(); ++i) press("cmdMovePanel");
            EXPECT_FALSE(button.visibleRegion().isEmpty()) << name;
        }
        press("cmdCancel");
    });
    press("cmdStartCheck");
}

TEST_F(WindowTest, ClosingFromOutsideAnswersItsQuestionsWithCancel) {
    plug();
    pickImage("[INFO]\nPGM=TARN-R200\n:0400000001020304F3\n:00000001FF\n");
    agree();
    answers.expect("frmMessage", [this](QDialog&) { window->closeFromOutside(); });  // about the image
    press("cmdStartCheck");
    EXPECT_FALSE(window->isVisible() || bench.serial.control.PortOpen());
    EXPECT_EQ(bench.settings.values["Corvane/FTP/OffLine"], "True");
    EXPECT_EQ(bench.devices[0]->log().switches, 0);
}

TEST_F(WindowTest, ClosingWhileItProgramsWaitsForTheEndAndStaysWhenTheDeviceIsNotWell) {
    auto& device = plug();
    device.faults().add("nak@2x9");
    pickImage();
    for (const bool isWell : {false, true}) {
        agree();
        when("Programming...", [&] {
            EXPECT_TRUE(!window->close() && window->isVisible());
            EXPECT_EQ(text("labStatus"), "The window closes when the update has finished.");
        });
        press(isWell ? "cmdForceISP" : "cmdStartCheck");
        EXPECT_EQ(window->isVisible(), !isWell);
    }
    EXPECT_EQ(bench.memoryFault(), "");
}

TEST_F(WindowTest, LeadsFromThreeFailuresToTheRescueAndKeepsBothInTheListOfJobs) {
    auto& device = plug();
    device.faults().add("nak@2x*");
    pickImage();
    agree();
    press("cmdStartCheck");
    EXPECT_EQ(text("labNotice"), "The device waits in its boot loader. It has no working firmware yet.");
    EXPECT_NE(verdict().find("Press \"Rescue with local.hex\" to force an update"), std::string::npos);
    EXPECT_EQ(control<QWidget>("txtVerdict").accessibleDescription().toStdString(),
              text("labNotice") + "\n" + verdict());
    device.faults() = {};
    answers.expect("frmQuery", [this](QDialog& dialog) {
        auto* judgement = dialog.findChild<QLineEdit*>("txtCheckVersion");
        EXPECT_EQ(judgement->text(), "Firmware Not Found");
        EXPECT_EQ(judgement->palette().color(QPalette::Text), QColor(255, 0, 0));
        answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdForceISP");
    EXPECT_EQ(text("labNotice") + text("labJobs"), "The device is updated.1 device updated");
    answers.expect("frmJobs", [](QDialog& dialog) {
        const auto* jobs = dialog.findChild<QTableWidget*>("tabJobs");
        std::string rows;
        for (int row = 0; row < jobs->rowCount(); ++row) {
            for (const int column : {0, 1, 2, 4, 7}) rows += jobs->item(row, column)->text().toStdString() + "|";
        }
        EXPECT_EQ(rows,
                  "2026-11-24 14:02:07|COM1|Unknown Device|local.hex|updated|"
                  "2026-11-24 14:02:07|COM1|TARN-R200 V5.1R23|local.hex|waiting|");
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdCancel"));
    });
    control<QAction>("mnuJobs").trigger();
}

TEST_F(WindowTest, FetchesAndOffersTheLinks) {
    plug();
    offer();
    agree();
    control<QWidget>("txtServer").setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);                // does what the large button says
    bench.reader.answers[site + "/n.txt"].content = std::string("\0", 1);  // called a text, and is none
    auto& links = control<QListWidget>("lstRefer");
    ASSERT_EQ(links.count(), 2);
    const auto click = [&](int row) {
        QTest::mouseClick(links.viewport(), Qt::LeftButton, {}, links.visualItemRect(links.item(row)).center());
    };
    click(1);  // leads nowhere
    const auto saved = bench.folder.data.at("saved.txt");
    answers.expect("QFileDialog", DialogAnswers::picking(saved));
    click(0);
    EXPECT_EQ(fakes::ScratchFolder::content(saved), std::string("\0", 1));
    bench.reader.answers[site + "/n.txt"].content = "notes";
    click(0);
    EXPECT_EQ(bench.launcher.shown, std::vector<std::string>{bench.folder.privateFolder() + "/n.txt"});
    bench.launcher.failure = "xdg-open: not there";
    links.setFocus();
    links.setCurrentRow(0);
    QTest::keyClick(&links, Qt::Key_Return);
    EXPECT_EQ(text("labStatus"), "The link could not be opened: xdg-open: not there");
}

TEST_F(WindowTest, HandsOverToANewerProgramWithoutSaving) {
    offer("[Corvane]\nVersion=V9\nFile=/p/corvane.exe\n");
    bench.reader.answers[site + "/p/corvane.exe"].content = "program";
    answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
    press("cmdStartCheck");
    EXPECT_EQ(bench.launcher.started.size(), 1u);
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(bench.settings.values.empty());
}

}  // namespace corvane::tests
