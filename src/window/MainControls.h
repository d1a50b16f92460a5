#pragma once

#include <QMainWindow>

#include "window/LogPane.h"
#include "window/NoticeStrip.h"
#include "window/PortFrame.h"
#include "window/StepBox.h"
#include "window/VerdictCard.h"

class QAction;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace corvane {

/// The main window's controls and how they are arranged: the three steps on the left, what the run says on the right.
/// It knows nothing of what they do. The window owns all of them.
struct MainControls {
    explicit MainControls(QMainWindow& window);

    NoticeStrip* notice;
    StepBox* steps[3];

    // What to install.
    QRadioButton* optLine[2];
    QPushButton* cmdOption;
    QStackedWidget* source;  ///< the site's page, the local one's
    QLineEdit* txtServer;
    QLineEdit* txtAccount[2];
    QRadioButton* optLast;
    QRadioButton* optFile;
    QPushButton* cmdLoadFile;
    QLabel* labFileName;
    QLabel* labFilePGM;
    QLabel* labFileVersion;
    QLabel* labFileDate;

    // Which device.
    QStackedWidget* device;  ///< a text, the port panel
    QLabel* labDevice;
    PortFrame* frameComport;

    // Update.
    QPushButton* cmdStartCheck;
    QPushButton* cmdForceISP;
    QPushButton* cmdCancel;
    QProgressBar* pbProgram;
    QLabel* labPhase;

    // What the run says.
    VerdictCard* txtVerdict;
    LogPane* txtInfo;
    QPushButton* cmdCopyLog;
    QPushButton* cmdSaveLog;
    QWidget* references;
    QListWidget* lstRefer;
    QLabel* labStatus;
    QLabel* labVersion;

    QAction* mnuSaveLog;
    QAction* mnuQuit;

private:
    void makeMenu(QMainWindow& window);
    QWidget* makeSource();
    QWidget* makeSitePage();
    QWidget* makeLocalPage();
    QWidget* makeDevice();
    QWidget* makeUpdate();
    QWidget* makeLog();
    QWidget* makeReferences();
    QWidget* makeStatus();
    void setTabOrder();
};

}  // namespace corvane
