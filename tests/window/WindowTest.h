#pragma once

#include <QClipboard>
#include <QMessageBox>
#include <QRadioButton>
#include <gtest/gtest.h>

#include "WindowBench.h"

namespace corvane {

class WindowTest : public ::testing::Test, protected WindowBench {
protected:
    WindowTest() {
        answers.onUnexpected = [](const std::string& name) { ADD_FAILURE() << "unexpected dialog " << name; };
        open();
    }
    ~WindowTest() override { EXPECT_TRUE(answers.isDone()) << "a dialog that was expected did not open"; }

    /// "line source|program,version,date" as the window shows them.
    std::string choice() const {
        std::string shown = control<QRadioButton>("optLine1").isChecked() ? "off " : "on ";
        shown += control<QRadioButton>("optFile").isChecked() ? "file" : "last";
        return shown + "|" + text("labFilePGM") + "," + text("labFileVersion") + "," + text("labFileDate");
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
            const auto text = log();
            const bool isThere =
                text.size() >= logged.size() && text.compare(text.size() - logged.size(), logged.size(), logged) == 0;
            if (isThere) return handler();
            when(logged, handler);
        });
    }

    std::string verdict() const { return control<QTextEdit>("txtVerdict").toPlainText().toStdString(); }

    Qt::CursorShape pointer() const {
        const auto* cursor = QApplication::overrideCursor();
        return cursor ? cursor->shape() : Qt::ArrowCursor;
    }
};

using WindowRun = WindowTest;

class WindowOnline : public WindowTest {
protected:
    const std::string site = "ftp://upd:se cret@ftp.example";
    const std::string section =
        "[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=one\\ntwo\nFILE=/f/r200.hex\n"
        "LinkDOC1=Notes\nLinkURL1=/n.txt\nLinkDOC3=Manual\n";

    void offer(const std::string& information) {
        for (const auto& [name, typed] :
             {std::pair("txtServer", "ftp.example"), {"txtAccount0", "upd"}, {"txtAccount1", "se cret"}}) {
            auto& field = control<QLineEdit>(name);
            field.selectAll();
            QTest::keyClicks(&field, typed);
        }
        bench.reader.answers[site].content = "drwxr-xr-x firmware\r\n";
        bench.reader.answers[site + "/firmware/firmware.inf"].content = information;
        bench.reader.answers[site + "/f/r200.hex"].content = kImage;
    }
};

}  // namespace corvane
