#include <QRadioButton>

#include "WindowTest.h"
#include "window/rehearsal/frmRehearsal.h"

namespace corvane {
namespace {

using WindowRehearsal = WindowTest;

TEST_F(WindowRehearsal, SaysAllTheTimeThatNoDeviceIsReal) {
    EXPECT_FALSE(control<QWidget>("labRehearsal").isVisible());
    window->close();
    WindowOptions options;
    options.rehearsal = Rehearsal::watermark();
    options.remark = "off line";
    open(options);
    EXPECT_EQ(text("labStatus"), "off line");
    EXPECT_TRUE(control<QWidget>("labRehearsal").isVisible());
    EXPECT_EQ(text("labRehearsal"), "REHEARSAL: no real device");
    EXPECT_EQ(window->windowTitle(), "Corvane (rehearsal)");
}

TEST_F(WindowRehearsal, IsStartedFromTheMenu) {
    EXPECT_FALSE(control<QAction>("mnuRehearse").isEnabled());  // nobody has said how
    window->close();
    int started = 0;
    QString problem;
    WindowOptions options;
    options.rehearse = [&] { return ++started, problem; };
    open(options);
    auto& action = control<QAction>("mnuRehearse");
    action.trigger();
    EXPECT_EQ(started, 1);
    EXPECT_EQ(text("labStatus"), "");
    problem = "no such file";
    action.trigger();
    EXPECT_EQ(text("labStatus"), "The rehearsal does not start: no such file");
}

TEST_F(WindowRehearsal, TellsWhichDeviceIsChosen) {
    frmRehearsal question;
    EXPECT_EQ(question.chosen().word, "healthy");
    question.findChildren<QRadioButton*>()[1]->click();
    EXPECT_EQ(question.chosen().word.toStdString(), "boot-loader");
}

}  // namespace
}  // namespace corvane
