#pragma once

#include <string>
#include <vector>

#include "platform/ProgramFolder.h"

namespace corvane {

/// A device that an earlier run left in its boot loader. Texts in UTF-8, the path in the system's bytes.
struct InterruptedRun {
    std::string time;  ///< "2026-11-24 14:02:07"
    std::string port;
    std::string device;
    std::string image;

    /// When, where and which: "2026-11-24 14:02: COM3, TARN-R200 V5.1R23".
    std::string brief() const;

    /// What the next start says about it, with the way to go on.
    std::string text() const;
};

/// Remembers from the erase to the reset which devices have no firmware, one a port, in a file that outlives a killed
/// program. Errors are answered with False: a run does not fail because it cannot be remembered.
class RunJournal {
public:
    explicit RunJournal(const ProgramFolder& folder) : folder_(folder) {}

    std::vector<InterruptedRun> read() const;

    /// In the file when it returns, in place of what it said about that port.
    [[nodiscard]] bool add(const InterruptedRun& run) const;

    /// The device at that port is well again.
    [[nodiscard]] bool remove(const std::string& port) const;

    /// So are all of them.
    [[nodiscard]] bool clear() const;

    /// The file, in the system's bytes.
    std::string path() const { return folder_.dataPath() + "/interrupted-runs"; }

private:
    bool write(const std::vector<InterruptedRun>& runs) const;

    const ProgramFolder& folder_;
};

}  // namespace corvane
