#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileStore.h"
#include "platform/files/ProgramFolder.h"
#include "run/Outcome.h"

namespace corvane {

/// One finished run as a line of the record; texts in UTF-8.
struct Job {
    std::string time;
    std::string port;
    std::string versionBefore;
    std::string versionAfter;  ///< empty when nobody asked, or the device did not answer
    std::string image;
    std::string digest;
    int repeatedRecords = 0;
    std::string verdict;
    std::string signedBy;  ///< the key of whoever answers for the image; empty when nobody does
};

Job jobOf(const Outcome& outcome, const std::string& time);

/// The line without its end: fields in quotes where they need them. Devices and sites write some of them, so each is
/// inert text: a control character is a blank, and one that a spreadsheet would take for a formula gets a ' in front.
std::string csvLine(const Job& job);

/// A line of the record in its fields, in the order of Job, as the head line names them.
std::vector<std::string> jobFields(std::string_view line);

/// A CSV file that grows by a line a run, with a head line; the user's own unless another file is named.
class JobRecord {
public:
    JobRecord(const ProgramFolder& folder, FileStore& files) : path_(folder.dataPath() + "/jobs.csv"), files_(files) {}

    void keepIn(const std::string& path) {
        path_ = path;
        named_ = FileStore::Named::byOperator;
    }
    const std::string& path() const { return path_; }

    /// Empty when it was written, else why not, in words.
    [[nodiscard]] std::string add(const Job& job);

    /// The last lines, the newest first, as they stand in the file.
    std::vector<std::string> last(std::size_t most) const;

    /// Devices that were updated since this object was made.
    int updatedDevices() const { return updated_; }

private:
    std::string path_;
    FileStore& files_;
    FileStore::Named named_ = FileStore::Named::byProgram;
    int updated_ = 0;
};

}  // namespace corvane
