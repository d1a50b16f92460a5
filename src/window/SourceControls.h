#pragma once

#include <functional>
#include <string>
#include <vector>

#include "settings/Choices.h"
#include "window/widgets/ElidedLabel.h"

class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;

namespace corvane {

/// A radio button that tells a step with the arrow keys from a choice: it only walks past then.
class WalkedButton;

/// "What to install": the maker's site, or a file of this computer. It knows nothing of what they do. Whatever its box
/// is put into owns all of it.
struct SourceControls {
    SourceControls();

    QWidget* box = nullptr;
    QRadioButton* optLine[2] = {};
    QPushButton* cmdOption = nullptr;
    QWidget* sitePage = nullptr;
    QWidget* localPage = nullptr;
    QLineEdit* txtServer = nullptr;
    QLineEdit* txtAccount[2] = {};
    QRadioButton* optLast = nullptr;
    QRadioButton* optFile = nullptr;
    QPushButton* cmdLoadFile = nullptr;
    QPushButton* cmdRecent = nullptr;
    QMenu* mnuRecent = nullptr;
    QWidget* dropTarget = nullptr;
    ElidedLabel* labFileName = nullptr;
    ElidedLabel* labFilePGM = nullptr;
    ElidedLabel* labFileVersion = nullptr;
    ElidedLabel* labFileDate = nullptr;
    ElidedLabel* labFileStep = nullptr;

    /// What is chosen; the step (Windows-1252) leads from the device's version to the local file's.
    void show(const Choices& choices, const std::string& step);

    /// These files (paths, the system's bytes) in the list that opens, each with its number as a key.
    void fillRecent(const std::vector<std::string>& files, const std::function<void(const std::string& file)>& load);

    /// Whether the operator is walking through the two file options with the arrow keys just now.
    bool isWalking() const;

private:
    void makeSitePage();
    void makeLocalPage();
    QWidget* makeDropTarget();

    WalkedButton* walked_[2] = {};
};

}  // namespace corvane
