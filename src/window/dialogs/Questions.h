#pragma once

#include <QList>
#include <QWidget>
#include <functional>

#include "face/FirmwareRecord.h"
#include "face/OperatorPrompts.h"
#include "face/PasswordPrompt.h"
#include "image/Image.h"

class QDialog;

namespace corvane {

/// The questions of a run as modal dialogs over a window, which is not owned.
class Questions : public PasswordPrompt, public OperatorPrompts {
public:
    explicit Questions(QWidget& window) : window_(window) {}

    /// The image of an entry as far as it is on this computer; none when it is not.
    std::function<Image(const FirmwareRecord& record)> localImage;

    /// Answers what is open, and what is still asked until the next renew, with Cancel.
    void abandon();
    void renew() { isAbandoned_ = false, passwordsAsked_ = 0; }

    /// The last question before the device is changed is open: the run has its image, but the device is as it was.
    bool isAskingAboutHarm() const { return isAskingAboutHarm_; }

    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override;
    bool messageBox(Question question, const std::string& text) override;
    void chooseFirmware(FirmwareDialog& dialog) override;

private:
    bool show(QDialog& dialog);
    QWidget* owner() const;

    QWidget& window_;
    QList<QDialog*> open_;  // each asks for the one below it
    bool isAbandoned_ = false;
    int passwordsAsked_ = 0;  // since the run began
    bool isAskingAboutHarm_ = false;
};

}  // namespace corvane
