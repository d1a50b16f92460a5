#pragma once

#include <string>

namespace corvane {

class FirmwareDialog;

/// What a message box asks about. An unsound image has Cancel as the default answer, everything else OK.
enum class Question { updateFirmware, newerProgram, unsoundImage };

/// Questions to the operator that stop the run until they are answered.
class OperatorPrompts {
public:
    virtual ~OperatorPrompts() = default;

    /// A box with an exclamation mark, OK and Cancel; True for OK. Text in Windows-1252 with CR LF.
    virtual bool messageBox(Question question, const std::string& text) = 0;

    /// Shows the selection until the dialog says that it is closed, handing the operator's choices to it.
    virtual void chooseFirmware(FirmwareDialog& dialog) = 0;
};

}  // namespace corvane
