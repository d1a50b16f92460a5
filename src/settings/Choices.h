#pragma once

#include <optional>
#include <string>

#include "image/Image.h"
#include "platform/AsyncReader.h"

namespace corvane {

/// What "updated" is to promise.
enum class Promise {
    programmed,  ///< every record was acknowledged; nobody asks the device afterwards
    running,     ///< and the device runs its application, which was asked
    version,     ///< and that says the image's version
};

/// A file that was to be the local image and is none.
struct FileRefusal {
    std::string path{};  ///< the system's bytes
    ImageProblem problem{};
};

/// What the operator has chosen on the main window, or on the command line. Account and server in UTF-8.
struct Choices {
    bool offLine = false;  ///< optLine(1)
    bool useFile = false;  ///< optFile: the local image, not the Download folder
    std::string server;
    std::string userName;
    std::string password;
    Image image;                ///< the local file that was picked; none when none was, or when it was no image
    ImageProblem imageProblem;  ///< why the local file is no image, or none any more
    FileRefusal refusal;        ///< the file that was picked last, when it was no image
    std::size_t mostImageBytes = ImageReading::kMostBytes;  ///< of an image, a local one or a site's
    std::optional<SiteRoute::Encryption> encryption;        ///< in place of the settings'
    std::optional<std::string> authorities;
    bool acceptsOlderList = false;  ///< a signed list may be older than the last one from its server
    Promise promise = Promise::running;

    /// What labFilePGM shows; Windows-1252.
    std::string programLabel() const {
        return image.isNone() && imageProblem ? "Invalid File Format!!" : image.info().program;
    }

    bool isLocalFile() const { return offLine && useFile; }
};

}  // namespace corvane
