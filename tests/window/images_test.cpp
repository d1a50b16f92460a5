#include <QMenu>

#include "WindowTest.h"

namespace corvane {
namespace {

constexpr char kMap[] =
    "12 bytes in 3 segments: 0x00000 to 0x00003, 4 bytes; a gap of 12 bytes; 0x00010 to 0x00013, 4 bytes; a gap of 12 "
    "bytes; 0x00020 to 0x00023, 4 bytes.";

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
        const auto label = [&dialog](const char* name) { return dialog.findChild<QLabel*>(name)->text(); };
        return (label("labFrom") + ">" + label("labTo") + " " + label("labStep")).toStdString() + "|" +
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
    const auto files = recent().actions();
    ASSERT_EQ(files.size(), 2);
    EXPECT_TRUE(files.front()->text().startsWith("&1 R&&D.hex in ")) << files.front()->text().toStdString();
    EXPECT_EQ(files.front()->toolTip().toStdString(), other);
    files.back()->trigger();
    EXPECT_EQ(text("labFileName") + text("labFileVersion"), "local.hexV5.2R1");
}

TEST_F(WindowImages, ShowTheMemoryThatTheyFill) {
    pickImage();
    auto& view = control<QWidget>("picMemory");
    EXPECT_EQ(view.accessibleDescription().toStdString(), kMap);
    const auto picture = view.grab().toImage();
    const auto filled = view.palette().color(QPalette::Highlight).rgb();
    std::string cells;
    for (const int share : {2, 10, 18, 26, 34})
        cells += picture.pixel(picture.width() * share / 36, 4) == filled ? "#" : ".";
    EXPECT_EQ(cells, "#.#.#");
}

TEST_F(WindowImages, AreComparedWithTheDeviceAndShownOnceTheyWereDownloaded) {
    plug();
    offer(section);
    for (const auto& memory :
         {std::string("no map"), kMap + std::string("|Memory map of the copy on this computer, r200.hex")}) {
        answers.expect("frmQuery", [this, memory](QDialog& dialog) {
            EXPECT_EQ(told(dialog), "V5.1R23>V5.2R1 \u25b2 a newer version|" + memory);
            answers.expect("frmMessage", DialogAnswers::pressing("cmdOK"));
            DialogAnswers::press(*dialog.findChild<QWidget*>("cmdOK"));
        });
        press("cmdStartCheck");
        press("optLine1");
    }
}

}  // namespace
}  // namespace corvane
