#include "RunBench.h"
#include "app/ConnectionSettings.h"

namespace corvane {
namespace {

class Presenter : public RunTest {
protected:
    /// "start cancel choices file" as far as they are enabled.
    std::string enabled() const {
        const auto controls = presenter.controls();
        return std::string(controls.start ? "start " : "") + (controls.cancel ? "cancel " : "") +
               (controls.choices ? "choices " : "") + (controls.localFile ? "file " : "");
    }

    std::string image() { return bench.folder.folder.file("a.hex", kImage); }
    std::string noImage() { return bench.folder.folder.file("b.hex", "nothing"); }
};

TEST_F(Presenter, StartsWithEmptySettingsOnLine) {
    const auto& choices = presenter.choices();
    EXPECT_EQ(choices.userName + choices.password, "");
    EXPECT_EQ(choices.server, "ftp.corvane.example");
    EXPECT_FALSE(choices.offLine || choices.useFile);
    EXPECT_EQ(enabled(), "start choices ");
}

TEST_F(Presenter, KeepsTheSettings) {
    presenter.account("host", "na:me", "p@ss");
    presenter.optLine_Click(true);
    EXPECT_TRUE(presenter.unload());
    Updater other(bench.platform(), bench.face.face());
    MainPresenter next(other);
    next.load();
    const auto& choices = next.choices();
    EXPECT_EQ(choices.server + "|" + choices.userName + "|" + choices.password, "host|na:me|p@ss");
    EXPECT_TRUE(choices.offLine);
    bench.settings.isReadOnly = true;
    EXPECT_FALSE(next.unload());
}

TEST_F(Presenter, EnablesTheStartAsTheImageAllows) {
    std::optional<std::string> picked;
    int asked = 0;
    presenter.pickFile = [&] {
        ++asked;
        return picked;
    };
    presenter.optLine_Click(true);
    EXPECT_EQ(enabled(), "start choices file ");
    presenter.optFile_Click();  // the file dialog is given up
    EXPECT_EQ(enabled(), "choices file ");
    picked = image();
    presenter.optFile_Click();
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(presenter.choices().useFile);
    EXPECT_EQ(enabled(), "start choices file ");
    EXPECT_EQ(presenter.choices().image.program, "TARN-R200");
    picked = std::nullopt;
    presenter.cmdLoadFile_Click();
    EXPECT_EQ(presenter.choices().image.path, image());
    picked = noImage();
    presenter.cmdLoadFile_Click();
    EXPECT_EQ(presenter.choices().image.program, "Invalid File Format!!");
    EXPECT_EQ(presenter.choices().image.version + presenter.choices().image.path, "");
    EXPECT_FALSE(presenter.choices().useFile);
    EXPECT_EQ(enabled(), "start choices file ");
    picked = image();
    presenter.cmdLoadFile_Click();
    EXPECT_TRUE(presenter.choices().useFile);
    presenter.optLine_Click(false);
    EXPECT_FALSE(presenter.choices().useFile);
    EXPECT_EQ(enabled(), "start choices ");
}

TEST_F(Presenter, DisablesEverythingDuringARun) {
    plug();
    loadImage();
    std::vector<std::string> seen;
    bench.face.onText = [&](const std::string& text) {
        if (text == "Open COM1 ..." || text == "Erase Firmware...") seen.push_back(enabled());
        if (text != "Erase Firmware...") return;
        presenter.optLine_Click(false);
        presenter.optLast_Click();
        EXPECT_TRUE(presenter.choices().isLocalFile());
    };
    start();
    EXPECT_EQ(seen, (std::vector<std::string>{"cancel ", ""}));
    EXPECT_EQ(enabled(), "start choices file ");
}

TEST(Connection, KeepsItsTwoKeys) {
    fakes::FakeSettingsStore store;
    auto settings = ConnectionSettings::load(store);
    EXPECT_EQ(settings.accessType, 0);
    EXPECT_FALSE(settings.usesProxy());
    settings.accessType = 2;
    settings.proxy = "p:8080";
    EXPECT_TRUE(settings.save(store));
    EXPECT_EQ(store.values["Corvane/FTP/AccessType"] + store.values["Corvane/FTP/Proxy"], "2p:8080");
    EXPECT_TRUE(ConnectionSettings::load(store).usesProxy());
    store.isReadOnly = true;
    EXPECT_FALSE(settings.save(store));
}

}  // namespace
}  // namespace corvane
