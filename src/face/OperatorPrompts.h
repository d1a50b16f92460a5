#pragma once

#include <string>

namespace corvane {

class FirmwareDialog;

/// What a message box asks about. OK is the default answer to what is usual, Cancel to the rest.
enum class Question {
    updateFirmware,
    unusualUpdate,  ///< an older version, another product, an unknown one, a device that does not say what it is
    newerProgram,
    unsoundImage,
    noJournal,     ///< a device that would be forgotten if the program or the computer failed
    otherDevices,  ///< the image that another device waits for
};

inline bool isUsual(Question question) {
    return question == Question::updateFirmware || question == Question::newerProgram;
}

/// The last questions before the device is changed.
inline bool isAboutHarm(Question question) {
    return question == Question::unsoundImage || question == Question::noJournal || question == Question::otherDevices;
}

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
