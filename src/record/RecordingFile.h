#pragma once

#include <memory>

#include "platform/files/FileStore.h"
#include "record/Tape.h"

namespace corvane {

/// A copy of a run's recording that a killed program leaves behind: the lines of the tape in a file of their own, at
/// once, but for the many of programming, which wait until they are worth a call of the system. It costs a run nothing
/// else, and a disk that does not take it ends the copy and not the run. Of a run that fills it, the beginning is kept.
class RecordingFile {
public:
    static constexpr std::size_t kMost = Recording::kMost;  ///< bytes

    RecordingFile(FileStore& files, Tape& tape) : files_(files), tape_(tape) {}

    /// Begins one with what the tape has so far, between these parts of a path, and gives its path; empty when no run
    /// is taken down, or when it cannot be made. It ends with the run.
    std::string begin(const std::string& start, const std::string& end);

private:
    void take(const RecordedEvent& event, std::string_view line);
    void write();

    FileStore& files_;
    Tape& tape_;
    std::unique_ptr<OutputFile> file_;
    std::string waiting_;
    std::size_t written_ = 0;
};

}  // namespace corvane
