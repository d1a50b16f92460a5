#pragma once

#include <string>

namespace corvane {

/// How a run ended.
enum class RunEnd {
    updated,
    alreadyRunning,
    loginFailed,
    informationMissing,  ///< firmware.inf could not be fetched
    handedOver,          ///< a newer program was started
    handOverFailed,      ///< a newer program was fetched and did not start
    noDevice,
    declined,  ///< the operator cancelled the selection
    nothingSuitable,
    nothingListed,
    notDefined,  ///< firmware.inf does not know the chosen image
    imageMissing,
    noBootLoader,       ///< the device did not answer with its boot loader's prompt
    programmingFailed,  ///< erased or not, the device waits in its boot loader
    failed,             ///< something that nobody foresaw
};

/// What is known about a run when it has ended. Texts in Windows-1252 unless they are paths or words of the system.
struct RunReport {
    RunEnd end = RunEnd::failed;
    bool cancelled = false;    ///< the operator cancelled, whatever followed
    bool wasSwitched = false;  ///< the device was asked to leave its application, or sat in its boot loader already
    bool wasErased = false;    ///< an erase was sent
    std::string port;
    std::string deviceVersion;  ///< as the device said it before
    std::string product;
    std::string version;  ///< of the image
    std::string imagePath;
    int repeatedRecords = 0;
    std::string failure;  ///< what went wrong unexpectedly, in the system's words
};

}  // namespace corvane
