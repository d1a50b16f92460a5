#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Processes.h"
#include "platform/files/FileStore.h"
#include "platform/files/ProgramFolder.h"

namespace corvane {

/// A device that a run has at work, or that an earlier one left. Texts in UTF-8, the path in the system's bytes.
struct InterruptedRun {
    /// What the device has, whatever it is doing.
    enum class Firmware {
        old,        ///< nothing was erased yet
        uncertain,  ///< it was told to erase, and has not said yet that it did
        none,       ///< it is being programmed
        whole       ///< the new one, complete
    };

    std::string time;  ///< "2026-11-24 14:02:07"
    std::string port;
    std::string device;  ///< as it called itself
    std::string image;
    std::string place{};  ///< the adapter or reader at the port, by what tells it from others; empty when nothing does
    Firmware firmware = Firmware::none;
    ProcessMark process{};    ///< that has it at work; none when its run has ended
    std::string version{};    ///< of the image: the device calls itself so when it is well
    std::string recording{};  ///< the file that has taken the run down, in the system's bytes; empty for none

    bool operator==(const InterruptedRun&) const = default;

    /// When, where and which: "2026-11-24 14:02: COM3, TARN-R200 V5.1R23".
    std::string brief() const;

    /// What the next start says about it, with the way to go on.
    std::string text() const;
};

/// In one word, as the journal and scripts have it: "old".
const char* nameOf(InterruptedRun::Firmware firmware);

/// Remembers which devices are on their way to other firmware, in a file that outlives a killed program and is on the
/// disk when each of these functions returns. An entry belongs to the process that works on the device as long as that
/// lives, else to nobody; it goes when the device is well or when the operator says so. One device rescued is one entry
/// gone, and never two. Several programs may use one journal. Owns nothing but its part in it.
class RunJournal {
public:
    RunJournal(const ProgramFolder& folder, FileStore& files, Processes& processes)
        : folder_(folder), files_(files), processes_(processes) {}

    /// Makes the file that takes the run down, behind this path's beginning and before its end, and gives its path;
    /// empty when there is to be none. Asked when a run begins; the file goes when its entry does.
    std::function<std::string(const std::string& start, const std::string& end)> makeRecording;

    /// The devices that were left, the oldest first; not those that a living program works on.
    std::vector<InterruptedRun> left() const;

    /// The device that was left where this run is about to put another one's image, which waits elsewhere; nothing when
    /// no two are confused.
    std::optional<InterruptedRun> confusedWith(const InterruptedRun& run) const;

    /// A run begins on this device: the entry becomes this process's. It takes the place of an earlier one that is, as
    /// far as anybody can know, about the same device. The reason in words when it could not be written, or when what
    /// is there cannot be read.
    [[nodiscard]] std::string begin(InterruptedRun run, bool isInBootLoader);

    /// What the device at work has now. The reason in words when it could not be written; so with the next three.
    /// Nothing is done without a begin.
    [[nodiscard]] std::string note(InterruptedRun::Firmware firmware);

    /// It is well.
    [[nodiscard]] std::string end();

    /// The run has ended, and the device is left as it is.
    [[nodiscard]] std::string leave();

    /// The operator says that these are well, or will never be.
    [[nodiscard]] std::string forget(const std::vector<InterruptedRun>& runs);

    /// Why nobody knows which devices were left; empty when it can be read, or is not there.
    std::string fault() const;

    /// The file, in the system's bytes.
    std::string path() const { return folder_.dataPath() + "/interrupted-runs"; }

private:
    template <typename Change>
    std::string change(Change change);
    template <typename Change>
    std::string changeOwn(Change change);
    std::string write(const std::vector<InterruptedRun>& runs) const;
    void removeRecordings(const std::vector<InterruptedRun>& runs) const;
    bool isAtWork(const InterruptedRun& run) const;

    const ProgramFolder& folder_;
    FileStore& files_;
    Processes& processes_;
    std::optional<InterruptedRun> own_;
};

}  // namespace corvane
