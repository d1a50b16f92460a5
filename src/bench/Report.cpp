#include "bench/Report.h"

namespace corvane::bench {
namespace {

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string countsOf(const models::Device& device) {
    const auto& log = device.log();
    std::string text = counted(log.requests.size() + log.commands.size(), "request") + ", " +
                       counted(static_cast<std::size_t>(log.erases), "erase") + ", " +
                       counted(log.records.size(), "record");
    if (!log.refused.empty()) text += " (" + std::to_string(log.refused.size()) + " unsound)";
    text += ", " + counted(static_cast<std::size_t>(log.restarts), "restart") + "; heard " +
            counted(log.bytesHeard, "byte") + ", gave " + counted(log.replies, "reply");
    if (log.replies != 1) text.replace(text.size() - 6, 6, "replies");
    if (!device.isPlugged()) text += "; unplugged";
    if (device.isInBoot()) text += "; in its boot loader";
    return text;
}

Verdict verdictOn(const models::Device& device, const models::Image& image) {
    if (device.log().erases == 0 && device.log().records.empty()) return {Verdict::Kind::untouched, "memory untouched"};
    const std::string text = models::comparison(device.flash(), image);
    return {text == "memory equals image" ? Verdict::Kind::equal : Verdict::Kind::different, text};
}

}  // namespace corvane::bench
