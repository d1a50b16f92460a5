#include <QMenu>
#include <QTableWidget>

#include "WindowTest.h"
#include "text/Text.h"

namespace corvane {
namespace {

class WindowVerdict : public WindowRun {
protected:
    /// Plugs a device with a fault in and updates it; what the strip says at the end.
    std::string updateWith(const std::string& fault) {
        models::DeviceOptions options;
        if (!fault.empty()) options.faults.add(fault);
        plug(options);
        pickImage();
        agree();
        press("cmdStartCheck");
        return text("labNotice");
    }

    bool says(const std::string& words) const { return verdict().find(words) != std::string::npos; }
};

TEST_F(WindowVerdict, IsTheRescueAfterThreeFailures) {
    EXPECT_EQ(updateWith("nak@2x*"), "The device waits in its boot loader. It has no working firmware yet.");
    EXPECT_TRUE(says("Erasing or programming failed three times.")) << verdict();
    EXPECT_TRUE(says("Force an update (Force ISP, or --force on the console) with the same image.")) << verdict();
    EXPECT_TRUE(says("Better leave the device plugged in")) << verdict();
    EXPECT_EQ(control<QWidget>("txtVerdict").accessibleDescription().toStdString(),
              text("labNotice") + "\n" + verdict());
    EXPECT_EQ(text("labDevice"), "COM1: TARN-R200 V5.1R23");
    EXPECT_EQ(bench.inhibitor.reasons.size(), 1U);
    EXPECT_FALSE(bench.inhibitor.isHeld);
}

TEST_F(WindowVerdict, NamesAnUnpluggedDevice) {
    EXPECT_EQ(updateWith("unplug@2"), "The device waits in its boot loader. It has no working firmware yet.");
    EXPECT_TRUE(says("COM1 was lost: it was unplugged, or its cable came loose.")) << verdict();
}

TEST_F(WindowVerdict, LeavesAnUntouchedDeviceInPeace) {
    plug();
    pickImage();
    bench.runtime.at(500, [this] { press("cmdCancel"); });
    press("cmdStartCheck");
    EXPECT_EQ(text("labNotice"), "The device was not changed.");
    EXPECT_TRUE(says("The run was cancelled.")) << verdict();
    pickImage(replaceAll(kImage, "TARN-R200", "KESTREL-C10"));
    press("cmdStartCheck");
    EXPECT_EQ(text("labNotice"), "The device was not changed.");
    EXPECT_TRUE(says("None of the images is for this device.")) << verdict();
    EXPECT_TRUE(says("It is safe to unplug the device.")) << verdict();
    EXPECT_TRUE(bench.inhibitor.reasons.empty());
}

TEST_F(WindowVerdict, LeadsFromABootLoaderToItsRescue) {
    models::DeviceOptions options;
    options.startsInBoot = true;
    plug(options);
    pickImage();
    press("cmdStartCheck");
    EXPECT_EQ(text("labNotice"), "A device waits in its boot loader; nothing was changed.");
    EXPECT_TRUE(says("Force an update (Force ISP")) << verdict();
    EXPECT_EQ(text("labJobs"), "");
    agree();
    press("cmdForceISP");
    EXPECT_EQ(text("labNotice"), "The device is updated.");
    EXPECT_TRUE(says("The device now answers with TARN-R200 V5.1R23")) << verdict();
    EXPECT_EQ(text("labJobs"), "1 device updated");
}

TEST_F(WindowVerdict, GivesTheCauseBeforeTheCure) {
    bench.serial.list(3);
    bench.serial.control.markForbidden(3);
    pickImage();
    bench.runtime.at(40, [this] { EXPECT_EQ(text("labStatus"), "") << "before the port was tried"; });
    press("cmdStartCheck");
    EXPECT_TRUE(
        verdict().starts_with("You may not use COM3 (/dev/fake3), which belongs to the group dialout. Run \"sudo "
                              "chown olive /dev/fake3\" and start again;"))
        << verdict();
}

TEST_F(WindowVerdict, IsKeptInTheListOfJobs) {
    EXPECT_EQ(updateWith(""), "The device is updated.");
    answers.expect("frmQuery", [](QDialog& dialog) { dialog.reject(); });
    press("cmdStartCheck");
    answers.expect("frmJobs", [](QDialog& dialog) {
        const auto* jobs = dialog.findChild<QTableWidget*>("tabJobs");
        std::string rows;
        for (int row = 0; row < jobs->rowCount(); ++row) {
            for (const int column : {0, 1, 2, 4, 7}) rows += jobs->item(row, column)->text().toStdString() + "|";
        }
        EXPECT_EQ(rows,
                  "2026-11-24 14:02:07|COM1|TARN-R200 V5.1R23||untouched|"
                  "2026-11-24 14:02:07|COM1|TARN-R200 V5.1R23|local.hex|updated|");
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdCancel"));
    });
    control<QAction>("mnuJobs").trigger();
}

}  // namespace
}  // namespace corvane
