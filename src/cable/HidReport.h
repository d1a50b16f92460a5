#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "text/Variant.h"

namespace corvane {

/// The reports that a reader and the host exchange. All have one length: the report ID, a count, and up to 62 bytes of
/// content, filled up with zeros. Both ends use these functions, so the layout stands here alone.
inline constexpr std::size_t kHidReportSize = 64;  ///< bytes, the report ID included
inline constexpr std::size_t kHidReportContent = kHidReportSize - 2;

using HidReport = std::array<std::uint8_t, kHidReportSize>;

enum class HidReportId : std::uint8_t {
    data = 1,     ///< the data stream, either way
    control = 2,  ///< the control channel, either way
    line = 3,     ///< one byte, bit 0: the break state towards the reader, clear-to-send towards the host
    feature = 4   ///< the reader's own, 63 bytes without a count; only as a feature report
};

/// What a report of one of the first three kinds holds.
struct HidContent {
    HidReportId id = HidReportId::data;
    bool more = false;  ///< the message goes on in the next report of this kind
    Bytes bytes;
};

/// Nothing for a report of another kind or with a count that does not fit; the bytes come from a device.
std::optional<HidContent> hidContentOf(const HidReport& report);

/// One report; at most kHidReportContent bytes.
HidReport hidReportOf(const HidContent& content);

/// A whole message as reports, all but the last marked as going on. An empty message gives no report.
std::vector<HidReport> hidReportsOf(HidReportId id, const Bytes& message);

}  // namespace corvane
