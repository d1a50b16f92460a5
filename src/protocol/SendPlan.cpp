#include "protocol/SendPlan.h"

#include <algorithm>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::uint32_t kData = 0, kEnd = 1, kSegmentAddress = 2, kUpperAddress = 4, kOwnStart = 9;
constexpr std::int64_t kLineEnd = 2;  // bytes that each line's end counts for, whatever ends it

/// A field of hexadecimal digits in a record's text, counted from 0.
std::optional<std::uint32_t> field(std::string_view line, std::size_t at, std::size_t digits) {
    return at < line.size() ? hexNumber(line.substr(at, digits)) : std::nullopt;
}

/// Takes the ":" lines of a file one by one.
class Planner {
public:
    Planner(SendPlan& plan, std::size_t size) : steps_(plan.steps), size_(static_cast<std::int64_t>(size)) {}

    /// False for a line that cannot be read.
    bool take(std::string_view line) {
        const auto address = field(line, 3, 4);
        const auto type = field(line, 7, 2);
        if (!field(line, 1, 2) || !address || !type) return false;
        std::optional<std::uint32_t> upper;
        if (*type == kUpperAddress) {
            // The record that was held back goes before the address moves on, even when this one cannot be read.
            sendHeld(first_);
            upper = field(line, 9, 4);
            if (!upper) return false;
        }
        consumed_ = std::min(consumed_ + static_cast<std::int64_t>(line.size()) + kLineEnd, size_);
        if (upper_ == 0 && *address == 0 && (*type == kData || *type == kOwnStart)) {
            hold(first_, line);
        } else if (*type == kEnd) {
            hold(end_, line);
        } else {
            send(line, *type, upper);
        }
        return true;
    }

    void finish() {
        sendHeld(first_);
        sendHeld(end_);
    }

private:
    void send(std::string_view line, std::uint32_t type, std::optional<std::uint32_t> upper) {
        const bool isAddress = upper || type == kSegmentAddress;
        if (upper) upper_ = *upper;
        if (isAddress) place_ = field(line, 9, 4) == 0U ? std::string_view() : line;
        steps_.push_back({line, consumed_, isAddress, place_});
    }

    /// A second record takes the place of the one that was held.
    void hold(std::string_view& held, std::string_view line) {
        held = line;
        steps_.push_back({{}, consumed_, false, place_});
    }

    void sendHeld(std::string_view& held) {
        if (!held.empty()) steps_.push_back({held, -1, false, place_});
        held = {};
    }

    std::vector<SendStep>& steps_;
    std::int64_t size_;
    std::int64_t consumed_ = 0;
    std::uint32_t upper_ = 0;
    std::string_view place_;  // the address record in force, unless it says 0
    std::string_view first_;  // the record at address 0 of the first segment
    std::string_view end_;
};

}  // namespace

SendPlan SendPlan::of(std::string_view content) {
    SendPlan plan;
    Planner planner(plan, content.size());
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        if (line.empty() || line.front() != ':') continue;
        if (!planner.take(line)) {
            plan.isMalformed = true;
            return plan;
        }
    }
    planner.finish();
    return plan;
}

}  // namespace corvane
