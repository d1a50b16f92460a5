#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/ProgramFolder.h"
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
};

Job jobOf(const Outcome& outcome, const std::string& time);

/// The line without its end: fields in quotes where they need them. A field that a spreadsheet would take for a formula
/// gets a ' in front, since devices and sites write some of them.
std::string csvLine(const Job& job);

/// A line of the record in its fields, in the order of Job, as the head line names them.
std::vector<std::string> jobFields(std::string_view line);

/// A CSV file that grows by a line a run, with a head line; the user's own unless another file is named.
class JobRecord {
public:
    explicit JobRecord(const ProgramFolder& folder) : path_(folder.dataPath() + "/jobs.csv") {}

    void keepIn(const std::string& path) { path_ = path; }
    const std::string& path() const { return path_; }

    /// False when it could not be written.
    [[nodiscard]] bool add(const Job& job);

    /// The last lines, the newest first, as they stand in the file.
    std::vector<std::string> last(std::size_t most) const;

    /// Devices that were updated since this object was made.
    int updatedDevices() const { return updated_; }

private:
    std::string path_;
    int updated_ = 0;
};

}  // namespace corvane
