#pragma once

#include "platform/files/ProgramFolder.h"

namespace corvane {

/// The executable's folder when it is a build or an unpacked copy and can be written; the user's data folder for an
/// installed program and for one that cannot write, made when it is missing. Chosen once, at construction.
class LinuxProgramFolder : public ProgramFolder {
public:
    struct Places {
        std::string executable;      ///< the program's own file
        std::string privateLibrary;  ///< from the executable's folder; there only when the program is installed
        std::string data;            ///< of this user
    };

    /// Those of the running program.
    LinuxProgramFolder();
    explicit LinuxProgramFolder(const Places& places);

    std::string path() const override { return path_; }
    std::string dataPath() const override { return data_; }
    std::string privateFolder() const override;

    /// The HID transport library: the file that CORVANE_VELLIO names, else the one beside the executable, else the one
    /// in the private library folder. Whether it exists shows when it is opened.
    std::string transportLibrary() const;

private:
    std::string path_;
    std::string data_;
    std::string beside_;
    std::string private_;
};

}  // namespace corvane
