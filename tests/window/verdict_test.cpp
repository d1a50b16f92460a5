#include <QMenu>
#include <QTableWidget>

#include "WindowTest.h"

namespace corvane {
namespace {

TEST_F(WindowRun, LeadsFromThreeFailuresToTheRescueAndKeepsBothInTheListOfJobs) {
    auto& device = plug();
    device.faults().add("nak@2x*");
    pickImage();
    agree();
    press("cmdStartCheck");
    EXPECT_EQ(text("labNotice"), "The device waits in its boot loader. It has no working firmware yet.");
    EXPECT_TRUE(verdict().starts_with("Programming failed in three tries.\n")) << verdict();
    EXPECT_NE(verdict().find("Press \"Rescue with local.hex\" to force an update"), std::string::npos);
    EXPECT_EQ(control<QWidget>("txtVerdict").accessibleDescription().toStdString(),
              text("labNotice") + "\n" + verdict());
    EXPECT_EQ(text("labDevice") + text("labJobs"), "COM1: TARN-R200 V5.1R23");
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

}  // namespace
}  // namespace corvane
