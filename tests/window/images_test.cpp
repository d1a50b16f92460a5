#include <QMenu>

#include "WindowTest.h"

namespace corvane {
namespace {

constexpr char kMap[] =
    "12 bytes in 3 segments: 0x00000 to 0x00003, 4 bytes; a gap of 12 bytes; 0x00010 to 0x00013, 4 bytes; a gap of 12 "
    "bytes; 0x00020 to 0x00023, 4 bytes.";
constexpr char kStep[] = "from V5.1R23 to V5.2R1, a newer version";

class WindowImages : public WindowOnline {
protected:
    QMenu& recent() const {
        auto& menu = control<QMenu>("mnuRecent");
        Q_EMIT menu.aboutToShow();
        return menu;
    }

    /// What the dialog says about its selected image: the step, the memory, what the map is of.
    static std::string told(const QDialog& dialog) {
        const auto* map = dialog.findChild<QWidget*>("picMemory");
        const auto* heading = dialog.findChild<QLabel*>("labMemory");
        return dialog.findChild<QLabel*>("labStep")->text().toStdString() + "|" +
               (map->isVisible() ? map->accessibleDescription() + "|" + heading->text() : "no map").toStdString();
    }
};

TEST_F(WindowImages, OffersTheFilesThatWereTakenLast) {
    press("optLine1");
    ASSERT_EQ(recent().actions().size(), 1);
    EXPECT_FALSE(recent().actions().front()->isEnabled());
    pickImage();
    const auto other = bench.folder.folder.file("R&D.hex", ":0400000001020304F2\n:00000001FF\n");
    answers.expect("QFileDialog", DialogAnswers::picking(other));
    press("cmdLoadFile");
    window->close();
    open();
    press("optLine1");
    ASSERT_EQ(recent().actions().size(), 2);
    EXPECT_TRUE(recent().actions().front()->text().startsWith("&1 R&&D.hex in "))
        << recent().actions().front()->text().toStdString();
    EXPECT_EQ(recent().actions().front()->toolTip().toStdString(), other);
    recent().actions().back()->trigger();
    EXPECT_EQ(text("labFileName") + text("labFileVersion"), "local.hexV5.2R1");
    EXPECT_TRUE(control<QWidget>("cmdStartCheck").isEnabled());
}

TEST_F(WindowImages, ShowTheMemoryThatTheyFill) {
    pickImage();
    auto& view = control<QWidget>("picMemory");
    EXPECT_EQ(view.accessibleDescription().toStdString(), kMap);
    const auto picture = view.grab().toImage();
    const auto filled = view.palette().color(QPalette::Highlight).rgb();
    const auto isFilled = [&](int share) { return picture.pixel(picture.width() * share / 36, 4) == filled; };
    EXPECT_EQ((std::vector{isFilled(2), isFilled(10), isFilled(18), isFilled(26), isFilled(34)}),
              (std::vector{true, false, true, false, true}));
    answers.expect("QFileDialog", DialogAnswers::picking(bench.folder.folder.file("bad.hex", "no record\n")));
    press("cmdLoadFile");
    EXPECT_EQ(view.accessibleDescription(), "");
}

TEST_F(WindowImages, AreComparedWithTheDeviceAndShownOnceTheyWereDownloaded) {
    plug();
    offer(section);
    bench.reader.answers[site + "/f/r200.hex"].ms = 4000;
    bench.reader.answers[site + "/f/r200.hex"].reports = 40;
    std::string transfer;
    when("two\n\nDownloading File...",
         [&] { bench.runtime.at(bench.runtime.ms() + 2000, [&] { transfer = text("labPhase"); }); });
    answers.expect("frmQuery", [this](QDialog& dialog) {
        EXPECT_EQ(told(dialog), std::string(kStep) + "|no map");
        answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
        DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
    });
    press("cmdStartCheck");
    EXPECT_TRUE(transfer.starts_with("Fetching the image: 44 bytes of 119 bytes, ")) << transfer;
    press("optLine1");
    answers.expect("frmQuery", [](QDialog& dialog) {
        EXPECT_EQ(told(dialog), std::string(kStep) + "|" + kMap + "|Memory map of the copy on this computer, r200.hex");
        dialog.reject();
    });
    press("cmdStartCheck");
}

}  // namespace
}  // namespace corvane
