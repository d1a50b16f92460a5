#pragma once

#include <optional>
#include <string>
#include <vector>

#include "archive/Archive.h"
#include "recording/Recording.h"

namespace corvane {

/// A run as it can be sent to somebody who was not there: the recording, and what is known beside it. Texts in UTF-8
/// but those of the events.
struct RunReport {
    std::vector<RecordedEvent> events;
    std::string about;    ///< "name: value" lines: versions, image, adapter, settings
    std::string verdict;  ///< what the operator was told

    /// Reads the bytes of a report file; a recording alone is taken too. Nothing, with the reason as a part of a
    /// sentence, when they are neither, damaged or hostile.
    [[nodiscard]] static std::optional<RunReport> read(const std::string& bytes, std::string& why);
};

/// The log of a run as the operator saw it, in Windows-1252 with CR LF.
std::string logOf(const std::vector<RecordedEvent>& events);

/// The port that a recording is about: where somebody answered, or else where something was sent; empty when none.
std::string portOf(const std::vector<RecordedEvent>& events);

}  // namespace corvane
