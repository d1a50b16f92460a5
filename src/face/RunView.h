#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Where a run stands.
enum class RunPhase {
    idle,
    login,
    information,  ///< firmware.inf, and the check for a newer program
    scan,
    selection,
    image,       ///< the image is fetched
    bootLoader,  ///< the device is switched
    erase,       ///< from here on the device has no firmware
    program,
    reset,
    proof,  ///< the device is asked whether it runs
    // Between two devices of a series.
    removal,     ///< the one that was updated is to be taken off
    nextDevice,  ///< the next one is waited for
};

/// A reference link; the index counts from 1, the title is Windows-1252.
struct ReferenceLink {
    int index = 0;
    std::string title;
    bool leads = true;  ///< somewhere; else it is a text and nothing more
};

/// What a run tells the face beside log and progress.
class RunView {
public:
    virtual ~RunView() = default;

    /// The run begins or has ended; while it is on, everything that would change it is disabled.
    virtual void running(bool isRunning) = 0;

    /// Whether Cancel is possible.
    virtual void cancellable(bool isCancellable) = 0;
    virtual void phase(RunPhase phase) = 0;
    virtual void links(const std::vector<ReferenceLink>& links) = 0;

    /// Why something failed and what helps, in UTF-8; it stands beside the log.
    virtual void advice(const std::string& text) = 0;
};

}  // namespace corvane
