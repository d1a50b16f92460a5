#pragma once

#include <QMainWindow>

#include "window/SourceControls.h"
#include "window/dialogs/ForgetButton.h"
#include "window/presenter/MainPresenter.h"
#include "window/widgets/CardView.h"
#include "window/widgets/LinkPicture.h"
#include "window/widgets/LogPane.h"
#include "window/widgets/MemoryView.h"
#include "window/widgets/PortFrame.h"
#include "window/widgets/PortsView.h"
#include "window/widgets/ReferenceList.h"

class QAction;
class QCheckBox;
class QHBoxLayout;
class QProgressBar;
class QScrollArea;

namespace corvane {

/// The main window's controls and how they are arranged: one column that scrolls where it must, and below it the
/// buttons, which are always seen. It knows nothing of what they do. The window owns all of them.
struct MainControls {
    explicit MainControls(QMainWindow& window);

    QScrollArea* column = nullptr;
    QLabel* labRehearsal = nullptr;
    LinkPicture* picLink = nullptr;

    // How things stand.
    CardView* card = nullptr;
    QProgressBar* pbProgram = nullptr;
    QLabel* labPhase = nullptr;
    QLabel* labStatus = nullptr;
    ForgetButton* cmdForget = nullptr;

    SourceControls source;
    QWidget* choices = nullptr;  ///< source with its heading

    QCheckBox* chkSeries = nullptr;  ///< seen in a run, too: the last device is often known only then

    // Which device.
    QWidget* devices = nullptr;
    QLabel* labDevice = nullptr;
    PortsView* lstPorts = nullptr;
    PortFrame* frameComport = nullptr;

    QWidget* references = nullptr;
    ReferenceList* lstRefer = nullptr;

    // Details.
    QPushButton* cmdDetails = nullptr;
    QWidget* details = nullptr;
    QLabel* labFacts = nullptr;
    MemoryView* picMemory = nullptr;
    LogPane* txtInfo = nullptr;
    QPushButton* cmdCopyLog = nullptr;
    QPushButton* cmdSaveLog = nullptr;

    // What to press.
    QPushButton* cmdStartCheck = nullptr;
    QPushButton* cmdForceISP = nullptr;
    QPushButton* cmdCancel = nullptr;
    QLabel* labJobs = nullptr;
    QLabel* labVersion = nullptr;

    QPushButton* cmdReport = nullptr;  ///< on the card of a run that did not end well

    QWidget* menu = nullptr;
    QAction* mnuSaveLog = nullptr;
    QAction* mnuSaveReport = nullptr;
    QAction* mnuManual = nullptr;
    QAction* mnuAbout = nullptr;
    QAction* mnuJobs = nullptr;
    QAction* mnuQuit = nullptr;
    QAction* mnuRehearse = nullptr;

    /// What can be used just now; a report only when there is a run to report.
    void enable(const Controls& controls, bool hasReport);

    /// Makes one of both buttons that start a run the large one.
    void emphasize(bool force);

    /// Colours that follow from the window's palette.
    void applyPalette(QWidget& window);

    /// During a scan the ports are buttons, else a list.
    void showScan(bool isScanning);

private:
    void makeMenu(QMainWindow& window);
    void makeCard();
    void makeChoices();
    void makeDevices();
    void makeReferences();
    void makeDetails();
    QWidget* makeButtons();
    void setTabOrder();

    QHBoxLayout* buttons_ = nullptr;
};

}  // namespace corvane
