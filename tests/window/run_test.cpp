#include <QListWidget>
#include <QProgressBar>

#include "WindowTest.h"

namespace corvane {
namespace {

constexpr char kIdle[] =
    "cmdStartCheck cmdForceISP cmdOption optLine0 optLine1 txtServer txtAccount0 txtAccount1 optFile optLast "
    "cmdLoadFile cmdRecent cmdCopyLog cmdSaveLog ";

TEST_F(WindowRun, CarriesADeviceThroughAWholeUpdate) {
    plug();
    const auto image = imageOf(480);
    pickImage(image);
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
    EXPECT_EQ(enabled(), kIdle);
    EXPECT_EQ(pointer(), Qt::ArrowCursor);
    EXPECT_EQ(window->windowTitle() + control<QProgressBar>("pbProgram").text(), "Corvane100 %");
    EXPECT_EQ(window->focusWidget()->objectName(), "labNotice");                   // where a screen reader then reads
    EXPECT_EQ(text("labNotice") + text("labFileStep"), "The device is updated.");  // ready for the next device
    EXPECT_NE(verdict().find("It is safe to unplug the device."), std::string::npos) << verdict();
}

TEST_F(WindowRun, EndsWhenOneOfItsQuestionsIsAnsweredWithCancel) {
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

TEST_F(WindowRun, ShowsThePortsDuringAScanAndJumpsToTheOneThatIsClicked) {
    models::DeviceOptions silent;
    silent.kind = models::Kind::silent;
    plug(silent, 2);
    plug(silent, 3);
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
    std::string scanned;
    when("Open COM5 ... < OK\n   Scan by 19200,N,8,1", [&] { scanned = log() + "\n" + text("labStatus"); });
    press("cmdStartCheck");
    EXPECT_EQ(scanned,
              "Open COM2 ... < OK\n   Scan by 19200,N,8,1, No Device!!\nOpen COM4 ... < NG\nOpen COM5 ... < OK\n"
              "   Scan by 19200,N,8,1\nCOM4 (/dev/fake4) is in use by another program. Close that and start again.");
    EXPECT_FALSE(control<QWidget>("frameComport").isVisible());
}

TEST_F(WindowRun, MovesThePanelWhenThereAreMorePortsThanFit) {
    models::DeviceOptions silent;
    silent.kind = models::Kind::silent;
    for (std::int16_t port = 1; port <= 16; ++port) plug(silent, port);
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

TEST_F(WindowRun, ClosingFromOutsideAnswersItsQuestionsWithCancel) {
    auto& device = plug();
    for (const bool isAboutTheImage : {false, true}) {
        if (isAboutTheImage) open();
        pickImage("[INFO]\nPGM=TARN-R200\n:0400000001020304F3\n:00000001FF\n");
        answers.expect("frmQuery", DialogAnswers::pressing("cmdOK"));
        if (isAboutTheImage) answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
        answers.expect("frmMessage", [this](QDialog&) { window->closeFromOutside(); });
        press("cmdStartCheck");
        EXPECT_FALSE(window->isVisible());
        EXPECT_EQ(bench.settings.values["Corvane/FTP/OffLine"], "True");
        EXPECT_FALSE(bench.serial.control.PortOpen());
    }
    EXPECT_EQ(device.log().switches, 0);
}

TEST_F(WindowRun, ClosingWhileItProgramsWaitsForTheEnd) {
    plug();
    pickImage();
    agree();
    bool wasOpen = false;
    when("Programming...", [&] {
        wasOpen = !window->close() && window->isVisible();
        EXPECT_EQ(text("labStatus"), "The window closes when the update has finished.");
    });
    press("cmdStartCheck");
    EXPECT_TRUE(wasOpen);
    EXPECT_EQ(bench.memoryFault(), "");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowOnline, LogsInFetchesAndOffersTheLinks) {
    plug();
    offer(section);
    agree();
    control<QWidget>("txtServer").setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);  // does what the large button says
    bench.reader.answers[site + "/n.txt"].content = "notes";
    auto& links = control<QListWidget>("lstRefer");
    ASSERT_EQ(links.count(), 2);
    EXPECT_EQ(links.item(1)->text(), "Manual");
    QTest::mouseClick(links.viewport(), Qt::LeftButton, {}, links.visualItemRect(links.item(1)).center());
    EXPECT_TRUE(bench.launcher.shown.empty());  // it leads nowhere
    QTest::mouseClick(links.viewport(), Qt::LeftButton, {}, links.visualItemRect(links.item(0)).center());
    EXPECT_EQ(bench.launcher.shown, std::vector<std::string>{bench.folder.privateFolder() + "/n.txt"});
    bench.reader.answers[site + "/n.txt"].content = std::string("\0", 1);  // called a text, and is none
    const auto saved = bench.folder.data.at("saved.txt");
    answers.expect("QFileDialog", DialogAnswers::picking(saved));
    QTest::mouseClick(links.viewport(), Qt::LeftButton, {}, links.visualItemRect(links.item(0)).center());
    EXPECT_EQ(fakes::ScratchFolder::content(saved), std::string("\0", 1));
    bench.reader.answers[site + "/n.txt"].content = "notes";
    bench.launcher.failure = "xdg-open: not there";
    links.setFocus();
    links.setCurrentRow(0);
    QTest::keyClick(&links, Qt::Key_Return);
    EXPECT_EQ(text("labStatus"), "The link could not be opened: xdg-open: not there");
}

TEST_F(WindowOnline, HandsOverToANewerProgramWithoutSaving) {
    offer("[Corvane]\nVersion=V9\nFile=/p/corvane.exe\n" + section);
    bench.reader.answers[site + "/p/corvane.exe"].content = "program";
    answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
    press("cmdStartCheck");
    EXPECT_EQ(bench.launcher.started.size(), 1u);
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(bench.settings.values.empty());
}

}  // namespace
}  // namespace corvane
