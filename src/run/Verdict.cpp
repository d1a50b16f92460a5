#include "run/Verdict.h"

#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Facts = std::vector<std::string>;

std::string duration(std::uint32_t milliseconds) {
    const auto seconds = (milliseconds + 500) / 1000;
    if (seconds < 60) return std::to_string(seconds) + " s";
    return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

/// A sentence of the table with what belongs into it.
std::string sentence(const std::string& text, const std::string& cause) {
    const auto place = text.find('%');
    if (place != std::string::npos) return std::string(text).replace(place, 1, cause) + ".";
    return text + (cause.empty() ? "." : ": " + cause + ".");
}

std::string imageFact(const RunFacts& known) {
    auto image = "Image: " + known.image.name();
    const auto name = std::string(trimmed(toUtf8(known.product + " " + known.version)));
    if (!name.empty()) image += ", " + name;
    return image + ", " + std::to_string(known.image.bytes().size()) + " bytes, SHA-256 " + known.image.sha256() + ".";
}

std::string proofFact(const RunFacts& known, const std::string& version) {
    const auto text = "The device now answers with " + toUtf8(version);
    if (known.version.empty() || containsNoCase(version, known.version)) return text + ".";
    return text + "; the image's version is " + toUtf8(known.version) + ".";
}

/// What happened, in words.
Facts reasonsFor(const Outcome& outcome) {
    const auto& known = outcome.facts;
    Facts reasons;
    if (const std::string reason = rowOf(outcome.end).sentence; !reason.empty())
        reasons.push_back(sentence(reason, outcome.cause));
    if (const auto* note = rowOf(outcome.device).note) reasons.push_back(sentence(note, toUtf8(known.port)));
    reasons.insert(reasons.end(), known.remarks.begin(), known.remarks.end());
    return reasons;
}

/// What was there, what went in, how it went.
Facts numbersFor(const RunFacts& known) {
    Facts facts;
    if (!known.deviceVersion.empty())
        facts.push_back(toUtf8(known.port) + ": " + toUtf8(known.deviceVersion) + " before the run.");
    if (!known.image.isNone()) facts.push_back(imageFact(known));
    if (!known.vouching.details.empty()) facts.push_back(known.vouching.details);
    if (!known.versionNow.empty()) facts.push_back(proofFact(known, known.versionNow));
    if (known.repeatedRecords) {
        facts.push_back(std::to_string(*known.repeatedRecords) +
                        (*known.repeatedRecords == 1 ? " record was repeated." : " records were repeated."));
    }
    if (known.milliseconds >= 1000) facts.push_back("It took " + duration(known.milliseconds) + ".");
    return facts;
}

}  // namespace

Verdict verdictFor(const Outcome& outcome) {
    const auto& end = rowOf(outcome.end);
    const auto& device = rowOf(outcome.device);
    Verdict verdict;
    verdict.kind = kindOf(outcome);
    verdict.headline = end.headline ? end.headline : device.headline;
    verdict.facts = verdict.reasons = reasonsFor(outcome);
    for (auto& fact : numbersFor(outcome.facts)) verdict.facts.push_back(std::move(fact));
    if (!outcome.facts.versionNow.empty())
        verdict.reasons.push_back(proofFact(outcome.facts, outcome.facts.versionNow));
    if (!outcome.facts.vouching.brief.empty()) verdict.reasons.push_back(outcome.facts.vouching.brief);
    verdict.signedBy = outcome.facts.vouching.name;
    for (auto* lines : {&verdict.facts, &verdict.reasons}) {
        for (auto& line : *lines) line = withoutControls(line);
    }
    for (const auto* step : end.steps) {
        if (step) verdict.steps.emplace_back(step);
    }
    verdict.isSafeToUnplug = device.isSafeToUnplug;
    verdict.isUnplugged = end.isUnplugged || device.isUnplugged;
    verdict.callsForForce = !verdict.isSafeToUnplug;
    return verdict;
}

std::string Verdict::unplugText() const {
    if (kind == Kind::handedOver || isUnplugged) return {};
    return isSafeToUnplug ? "It is safe to unplug the device."
                          : "Better leave the device plugged in; without power it stays in its boot loader and can "
                            "still be rescued.";
}

std::vector<std::string> verdictLines(const Verdict& verdict) {
    std::vector<std::string> lines = {verdict.headline};
    lines.insert(lines.end(), verdict.facts.begin(), verdict.facts.end());
    if (const auto text = verdict.unplugText(); !text.empty()) lines.push_back(text);
    for (std::size_t i = 0; i < verdict.steps.size(); ++i)
        lines.push_back(std::to_string(i + 1) + ". " + verdict.steps[i]);
    return lines;
}

std::string verdictName(Verdict::Kind kind) {
    switch (kind) {
        case Verdict::Kind::updated:
            return "updated";
        case Verdict::Kind::unconfirmed:
            return "unconfirmed";
        case Verdict::Kind::untouched:
            return "untouched";
        case Verdict::Kind::waiting:
            return "waiting";
        case Verdict::Kind::uncertain:
            return "uncertain";
        case Verdict::Kind::handedOver:
            break;
    }
    return "handedOver";
}

std::string verdictJson(const Verdict& verdict) {
    const auto list = [](const std::vector<std::string>& texts) {
        std::vector<std::string> strings;
        for (const auto& text : texts) strings.push_back(jsonString(text));
        return "[" + joined(strings, ",") + "]";
    };
    return "{\"kind\":" + jsonString(verdictName(verdict.kind)) + ",\"headline\":" + jsonString(verdict.headline) +
           ",\"facts\":" + list(verdict.facts) + ",\"steps\":" + list(verdict.steps) +
           (verdict.signedBy.empty() ? "" : ",\"signedBy\":" + jsonString(verdict.signedBy)) +
           ",\"safeToUnplug\":" + (verdict.isSafeToUnplug ? "true" : "false") + "}";
}

}  // namespace corvane
