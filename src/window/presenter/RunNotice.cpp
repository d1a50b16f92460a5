#include "window/presenter/RunNotice.h"

#include <algorithm>
#include <filesystem>

#include "text/Text.h"

namespace corvane {
namespace {

/// A line for each of several devices, as many as leave room for the rest of a small window.
std::string listOf(const std::vector<InterruptedRun>& left) {
    constexpr std::size_t kShown = 2;
    std::vector<std::string> lines{std::to_string(left.size()) +
                                   " devices were left in their boot loaders. To go on, force an update of each."};
    for (std::size_t i = 0; i < std::min(kShown, left.size()); ++i) {
        lines.push_back(left[i].brief() + ", " + std::filesystem::path(left[i].image).filename().string());
    }
    if (left.size() > kShown) lines.back() += ", and " + std::to_string(left.size() - kShown) + " more";
    return joined(lines, "\n");
}

}  // namespace

RunNotice noticeAtStart(const std::vector<InterruptedRun>& left) {
    if (left.empty()) return noticeFor(RunPhase::idle);
    std::vector<std::string> whole;
    for (const auto& run : left) whole.push_back(run.text());
    if (left.size() == 1) return {whole.front(), RunNotice::Level::danger};
    return {listOf(left), RunNotice::Level::danger, joined(whole, "\n")};
}

RunNotice noticeFor(RunPhase phase) {
    switch (phase) {
        case RunPhase::idle:
            return {"Choose what to install, connect the device, then start the update.", RunNotice::Level::plain};
        case RunPhase::login:
        case RunPhase::information:
        case RunPhase::scan:
        case RunPhase::selection:
        case RunPhase::image:
        case RunPhase::bootLoader:
            return {"Nothing on the device has changed yet.", RunNotice::Level::safe};
        case RunPhase::erase:
        case RunPhase::program:
        case RunPhase::reset:
            break;
        case RunPhase::proof:
            return {"The device is programmed. It is asked whether it runs.", RunNotice::Level::safe};
    }
    return {"Do not unplug the device, and do not switch it or this computer off.", RunNotice::Level::danger};
}

RunNotice noticeFor(const Verdict& verdict) {
    switch (verdict.kind) {
        case Verdict::Kind::updated:
            return {verdict.headline, RunNotice::Level::safe};
        case Verdict::Kind::unconfirmed:
            return {verdict.headline, RunNotice::Level::caution};
        case Verdict::Kind::uncertain:
        case Verdict::Kind::waiting:
            return {verdict.headline, RunNotice::Level::danger};
        case Verdict::Kind::untouched:
        case Verdict::Kind::handedOver:
            break;
    }
    return {verdict.headline, RunNotice::Level::plain};
}

int stepOf(RunPhase phase) {
    if (phase == RunPhase::idle || phase == RunPhase::login || phase == RunPhase::information) return 1;
    return phase == RunPhase::scan ? 2 : 3;
}

}  // namespace corvane
