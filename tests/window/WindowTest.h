#pragma once

#include <QClipboard>
#include <QMessageBox>
#include <QRadioButton>
#include <gtest/gtest.h>

#include "WindowBench.h"
#include "window/rehearsal/frmRehearsal.h"

namespace corvane {

struct WindowTest : ::testing::Test, protected WindowBench {
    WindowTest() {
        answers.onUnexpected = [](const std::string& name) { ADD_FAILURE() << "unexpected dialog " << name; };
        open();
    }
    ~WindowTest() override { EXPECT_TRUE(answers.isDone()) << "a dialog that was expected did not open"; }

    /// "line source|program,version,date" as the window shows them.
    std::string choice() const {
        return std::string(control<QRadioButton>("optLine1").isChecked() ? "off " : "on ") +
               (control<QRadioButton>("optFile").isChecked() ? "file" : "last") + "|" + text("labFilePGM") + "," +
               text("labFileVersion") + "," + text("labFileDate");
    }

    /// What can be used, by the names of the controls.
    std::string enabled() const {
        std::string names;
        for (const char* name : {"cmdStartCheck", "cmdForceISP", "cmdCancel", "cmdOption", "optLine0", "optLine1",
                                 "txtServer", "txtAccount0", "txtAccount1", "optFile", "optLast", "cmdLoadFile",
                                 "cmdRecent", "cmdCopyLog", "cmdSaveLog"}) {
            if (control<QWidget>(name).isEnabled()) names += std::string(name) + " ";
        }
        return names;
    }

    /// Calls a handler once the log ends with a text, from within the run.
    void when(const std::string& logged, std::function<void()> handler) {
        bench.runtime.at(bench.runtime.ms() + 1, [=, this] {
            if (log().ends_with(logged)) return handler();
            when(logged, handler);
        });
    }

    /// On line, with an account typed and a site that offers an image, and whatever else its list says before that.
    void offer(const std::string& more = "") {
        for (const auto& [name, typed] :
             {std::pair("txtServer", "ftp.example"), {"txtAccount0", "upd"}, {"txtAccount1", "se cret"}}) {
            auto& field = control<QLineEdit>(name);
            field.selectAll();
            QTest::keyClicks(&field, typed);
        }
        bench.reader.answers[site].content = "drwxr-xr-x firmware\r\n";
        bench.reader.answers[site + "/firmware/firmware.inf"].content =
            more +
            "[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=one\\ntwo\nFILE=/f/r200.hex\n"
            "LinkDOC1=Notes\nLinkURL1=/n.txt\nLinkDOC3=Manual\n";
        bench.reader.answers[site + "/f/r200.hex"].content = kImage;
    }

    std::string verdict() const { return control<QTextEdit>("txtVerdict").toPlainText().toStdString(); }

    Qt::CursorShape pointer() const {
        const auto* cursor = QApplication::overrideCursor();
        return cursor ? cursor->shape() : Qt::ArrowCursor;
    }

    const std::string site = "ftp://upd:se cret@ftp.example";
};

}  // namespace corvane
