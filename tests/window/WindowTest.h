#pragma once

#include <QClipboard>
#include <QMessageBox>
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

    /// What can be used, by the names of the controls.
    std::string enabled() const {
        std::string names;
        for (const char* name :
             {"cmdStartCheck", "cmdForceISP", "cmdCancel", "cmdOption", "optLine0", "optLine1", "txtServer",
              "txtAccount0", "txtAccount1", "optFile", "optLast", "cmdLoadFile", "cmdCopyLog", "cmdSaveLog"}) {
            if (control<QWidget>(name).isEnabled()) names += std::string(name) + " ";
        }
        return names;
    }
};

}  // namespace corvane
