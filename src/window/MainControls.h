#pragma once

#include <QMainWindow>

#include "window/widgets/ElidedLabel.h"
#include "window/widgets/LogPane.h"
#include "window/widgets/MemoryView.h"
#include "window/widgets/NoticeStrip.h"
#include "window/widgets/PortFrame.h"
#include "window/widgets/StepBox.h"
#include "window/widgets/VerdictCard.h"

class QAction;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace corvane {

/// The main window's controls and how they are arranged: the three steps on the left, what the run says on the right.
/// It knows nothing of what they do. The window owns all of them.
struct MainControls {
    explicit MainControls(QMainWindow& window);

    QLabel* labRehearsal = nullptr;
    NoticeStrip* notice = nullptr;
    StepBox* steps[3] = {};

    // What to install.
    QRadioButton* optLine[2] = {};
    QPushButton* cmdOption = nullptr;
    QStackedWidget* source = nullptr;  ///< the site's page, the local one's
    QLineEdit* txtServer = nullptr;
    QLineEdit* txtAccount[2] = {};
    QRadioButton* optLast = nullptr;
    QRadioButton* optFile = nullptr;
    QPushButton* cmdLoadFile = nullptr;
    QPushButton* cmdRecent = nullptr;
    QMenu* mnuRecent = nullptr;
    ElidedLabel* labFileName = nullptr;
    ElidedLabel* labFilePGM = nullptr;
    ElidedLabel* labFileVersion = nullptr;
    ElidedLabel* labFileDate = nullptr;
    ElidedLabel* labFileStep = nullptr;
    MemoryView* picMemory = nullptr;

    // Which device.
    QStackedWidget* device = nullptr;  ///< a text, the port panel
    QLabel* labDevice = nullptr;
    PortFrame* frameComport = nullptr;

    // Update.
    QPushButton* cmdStartCheck = nullptr;
    QPushButton* cmdForceISP = nullptr;
    QPushButton* cmdCancel = nullptr;
    QProgressBar* pbProgram = nullptr;
    QLabel* labPhase = nullptr;

    // What the run says.
    VerdictCard* txtVerdict = nullptr;
    LogPane* txtInfo = nullptr;
    QPushButton* cmdCopyLog = nullptr;
    QPushButton* cmdSaveLog = nullptr;
    QWidget* references = nullptr;
    QListWidget* lstRefer = nullptr;
    QLabel* labStatus = nullptr;
    QLabel* labJobs = nullptr;
    QLabel* labVersion = nullptr;

    QAction* mnuSaveLog = nullptr;
    QAction* mnuJobs = nullptr;
    QAction* mnuQuit = nullptr;
    QAction* mnuRehearse = nullptr;

private:
    void makeMenu(QMainWindow& window);
    QWidget* makeSource();
    QWidget* makeSitePage();
    QWidget* makeLocalPage();
    QLayout* makeFileLabels();
    QWidget* makeDevice();
    QWidget* makeUpdate();
    QWidget* makeLog();
    QWidget* makeReferences();
    QWidget* makeStatus();
    void setTabOrder();
};

}  // namespace corvane
