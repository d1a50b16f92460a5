#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "image/Image.h"
#include "trust/Voucher.h"

namespace corvane {

/// How a run ended. EndTable.cpp says what each means to the operator: a new one is a new line there.
enum class RunEnd {
    updated,       ///< as it was to be promised
    notConfirmed,  ///< the device runs, and answers with another version than the image's
    otherVersion,  ///< the same where the version was part of the promise
    notHeardOf,    ///< programmed and told to restart; nothing has answered since
    outOfStep,     ///< programmed, and it runs; but an answer came that was not due, so its memory is in doubt
    notRestarted,  ///< programmed; its boot loader has not obeyed any restart
    alreadyRunning,
    cancelled,  ///< by the operator, before anything was done to the device
    // The site.
    loginRefused,        ///< the server does not take user name and password
    loginFailed,         ///< it did not come to that, or broke off
    sessionClosed,       ///< by the idle watch, while a question stood open
    informationMissing,  ///< firmware.inf could not be fetched
    notStored,           ///< what the site gave could not be stored on this computer
    oldFileStays,        ///< nor could it take the place of what is there
    listNotBelieved,     ///< firmware.inf is signed by nobody who is trusted here
    handedOver,          ///< a newer program was started
    handOverFailed,      ///< a newer program was fetched and did not start
    // The scan.
    noPort,          ///< there is none at all
    noPortOpened,    ///< there are some, and none could be opened
    noDevice,        ///< nothing answered
    bootLoaderSeen,  ///< nothing answered but a boot loader that was not to be taken
    // The selection.
    declined,  ///< the operator cancelled it
    nothingSuitable,
    nothingListed,      ///< on line: firmware.inf offers nothing
    nothingDownloaded,  ///< off line: nothing of what it offers is here
    notDefined,         ///< firmware.inf does not know the chosen image
    // The image.
    imageNotFetched,
    imageNotThere,
    imageNotTheOne,  ///< its digest is another one than firmware.inf says
    imageUnreadable,
    imageTooLarge,
    imageEmpty,     ///< it holds no data
    imageRefused,   ///< it does not add up, and the operator did not want it all the same
    notRemembered,  ///< the journal could not be written, and the operator did not want to go on without it
    // The device.
    switchLocked,      ///< it wants a password first
    switchRefused,     ///< it did not agree to leave its application
    switchUnanswered,  ///< it was asked to and said nothing
    bootLoaderSilent,  ///< it agreed, and its boot loader's prompt was not seen
    lostInSwitch,      ///< its port was gone when it was to switch
    eraseFailed,
    programmingFailed,
    lostInBootLoader,  ///< its port was gone while it was erased or programmed
    // What nobody foresaw.
    failed,
    failedMidway,  ///< when the device had been asked to leave its application
};

/// What is known of the device when a run has ended, or has come so far.
enum class DeviceState {
    none,                ///< none was found
    application,         ///< it runs what it ran before, or what was installed
    leftInBootLoader,    ///< it sat in its boot loader before, and nothing was done to it
    mayBeInBootLoader,   ///< it was asked to switch; if it did, its firmware is whole
    bootLoaderWhole,     ///< it sits there with its firmware whole
    bootLoaderDoubtful,  ///< it sits there, and an erase was sent that it did not acknowledge
    bootLoaderEmpty,     ///< it sits there without firmware that works
    bootLoaderComplete,  ///< it sits there with all of its new firmware
    gone,                ///< its port was lost while it ran its application
    unheard,             ///< it was programmed, and nobody knows whether it runs
    inDoubt,             ///< it runs, and its memory may not be the image's
};

/// How the part of a run ended that ended it, and why: a part of a sentence in UTF-8, empty when the end says it all.
struct Ending {
    RunEnd end = RunEnd::failed;
    std::string cause{};
};

/// What a run has come to know. Texts in Windows-1252 unless they are paths or said to be UTF-8. Nothing is decided by
/// it: that is the outcome's.
struct RunFacts {
    std::string port;           ///< as the log shows it
    std::string portName;       ///< as it opens
    std::string place;          ///< what the adapter or the reader at the port is known by; UTF-8
    std::string settings;       ///< of the line when the device was found
    std::string protocolName;   ///< empty for a boot loader, which tells nothing of its application's
    std::string deviceVersion;  ///< as the device said it before
    std::string product;
    std::string version;                 ///< of the image
    Vouching vouching;                   ///< who answers for it
    Image image;                         ///< what was to be installed, or was; none when no image was had
    std::optional<int> repeatedRecords;  ///< since the first erase was sent
    std::uint32_t milliseconds = 0;      ///< from start to end
    std::string versionNow;              ///< what the device said after the restart; empty when it said nothing
    std::vector<std::string> remarks;    ///< what went wrong beside the run, whole sentences in UTF-8
};

/// How a run ended, what the device is now, why, and what is known beside that.
struct Outcome {
    RunEnd end = RunEnd::failed;
    DeviceState device = DeviceState::none;
    std::string cause;  ///< as in Ending
    RunFacts facts;
};

}  // namespace corvane
