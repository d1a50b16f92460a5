#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace corvane {

/// One step of sending an image, in the order of sending.
struct SendStep {
    std::string_view record;     ///< as it stands in the file; empty for a line that is held back until later
    std::int64_t consumed = -1;  ///< bytes of the file that are done with this step; -1 for one held back before
    bool isAddress = false;      ///< it tells the device what to add to the addresses that follow
    std::string_view place;      ///< the address record that governs this one; empty for the first segment
};

/// The records of an image in the order in which they are sent: the record at address 0 of the first 64 KiB behind the
/// others of that segment, the end record last of all. A device that loses its power half way then has no valid start
/// and stays in its boot loader.
struct SendPlan {
    std::vector<SendStep> steps;
    bool isMalformed = false;  ///< a line that cannot be read stands behind the last step; what was held back stays so

    /// The records point into the content, which lives longer.
    static SendPlan of(std::string_view content);
};

}  // namespace corvane
