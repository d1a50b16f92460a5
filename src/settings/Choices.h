#pragma once

#include <string>
#include <vector>

namespace corvane {

/// A local Intel HEX file that the operator has picked. Labels in Windows-1252, the path in the system's bytes.
struct LocalImage {
    std::string path;                  ///< empty when none is loaded
    std::string program;               ///< labFilePGM
    std::string version;               ///< labFileVersion
    std::string date;                  ///< labFileDate
    std::vector<std::string> records;  ///< its ":" lines, the first 32768 of them

    /// "program version(date)", what the log and the selection say about it.
    std::string description() const { return program + " " + version + "(" + date + ")"; }
};

/// What "updated" is to promise.
enum class Promise {
    programmed,  ///< every record was acknowledged; nobody asks the device afterwards
    running,     ///< and the device runs its application, which was asked
    version,     ///< and that says the image's version
};

/// What the operator has chosen on the main window, or on the command line. Account and server in UTF-8.
struct Choices {
    bool offLine = false;  ///< optLine(1)
    bool useFile = false;  ///< optFile: the local image, not the Download folder
    std::string server;
    std::string userName;
    std::string password;
    LocalImage image;
    Promise promise = Promise::running;

    bool isLocalFile() const { return offLine && useFile; }
};

}  // namespace corvane
