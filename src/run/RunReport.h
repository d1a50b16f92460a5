#pragma once

#include <cstdint>
#include <string>

#include "site/SiteFailure.h"

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
    imageRefused,       ///< it does not add up, and the operator did not want it all the same
    noBootLoader,       ///< the device did not answer with its boot loader's prompt
    programmingFailed,  ///< erased or not, the device waits in its boot loader
    failed,             ///< something that nobody foresaw
};

/// What is known about a run when it has ended. Texts in Windows-1252 unless they are paths or words of the system.
struct RunReport {
    RunEnd end = RunEnd::failed;
    bool cancelled = false;          ///< the operator cancelled, whatever followed
    bool foundInBootLoader = false;  ///< the device sat in its boot loader already, and was taken there
    bool wasSwitched = false;     ///< the device was asked to leave its application, or sat in its boot loader already
    bool isInBootLoader = false;  ///< it agreed to that, or sat there already
    bool maySitInBootLoader = false;  ///< nobody knows: it was asked to switch and did not answer
    bool wasErased = false;           ///< an erase was sent
    bool isErased = false;            ///< and acknowledged
    bool portLost = false;            ///< the device's port was gone at the end
    std::string port;                 ///< as the log shows it
    std::string portName;             ///< as it opens
    std::string bootLoaderPort;       ///< where no device, but a boot loader was found that was not to be taken
    std::string settings;             ///< of the line when the device was found
    std::string protocolName;
    std::string deviceVersion;  ///< as the device said it before
    std::string product;
    std::string version;  ///< of the image
    std::string imagePath;
    std::uint64_t imageBytes = 0;
    std::int64_t imageRecords = 0;
    std::string imageDigest;  ///< SHA-256 in lower-case hexadecimal digits; empty when no image was had
    int repeatedRecords = 0;
    std::uint32_t milliseconds = 0;  ///< from start to end
    SiteFailure siteFailure;         ///< why the site did not give what ended the run
    SiteFailure newerProgram;        ///< why a newer program that was wanted could not be had
    std::string failure;             ///< what went wrong unexpectedly, in the system's words
};

}  // namespace corvane
