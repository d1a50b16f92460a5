#include "app/RunNotice.h"

#include "text/Text.h"

namespace corvane {

RunNotice noticeAtStart(const std::vector<InterruptedRun>& left) {
    if (left.empty()) return noticeFor(RunPhase::idle);
    std::vector<std::string> lines;
    for (const auto& run : left) lines.push_back(run.text());
    return {joined(lines, "\n"), RunNotice::Level::danger};
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
    }
    return {"Do not unplug the device, and do not switch it or this computer off.", RunNotice::Level::danger};
}

RunNotice noticeWhileAsking() {
    return {"The device is programmed. It is asked which version it runs now.", RunNotice::Level::safe};
}

RunNotice noticeFor(const Verdict& verdict) {
    switch (verdict.kind) {
        case Verdict::Kind::updated:
            return {verdict.headline, RunNotice::Level::safe};
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
