#include "cable/HidReport.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr std::uint8_t kMore = 0x80;  // beside the count, which needs six bits

}  // namespace

std::optional<HidContent> hidContentOf(const HidReport& report) {
    const std::uint8_t id = report[0];
    const std::size_t count = report[1] & ~kMore;
    if (id < static_cast<int>(HidReportId::data) || id > static_cast<int>(HidReportId::line)) return std::nullopt;
    if (count > kHidReportContent) return std::nullopt;
    HidContent content{static_cast<HidReportId>(id), (report[1] & kMore) != 0, {}};
    content.bytes.assign(report.begin() + 2, report.begin() + 2 + static_cast<std::ptrdiff_t>(count));
    return content;
}

HidReport hidReportOf(const HidContent& content) {
    HidReport report{};
    const std::size_t count = std::min(content.bytes.size(), kHidReportContent);
    report[0] = static_cast<std::uint8_t>(content.id);
    report[1] = static_cast<std::uint8_t>(count | (content.more ? kMore : 0));
    std::copy_n(content.bytes.begin(), count, report.begin() + 2);
    return report;
}

std::vector<HidReport> hidReportsOf(HidReportId id, const Bytes& message) {
    std::vector<HidReport> reports;
    for (std::size_t at = 0; at < message.size(); at += kHidReportContent) {
        const std::size_t end = std::min(at + kHidReportContent, message.size());
        const Bytes piece(message.begin() + static_cast<std::ptrdiff_t>(at),
                          message.begin() + static_cast<std::ptrdiff_t>(end));
        reports.push_back(hidReportOf({id, end < message.size(), piece}));
    }
    return reports;
}

}  // namespace corvane
