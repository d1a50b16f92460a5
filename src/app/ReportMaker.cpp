#include "app/ReportMaker.h"

#include <algorithm>

#include "platform/ProgramInfo.h"
#include "report/RunReport.h"
#include "run/EndTable.h"
#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

const char* nameOf(Promise promise) {
    switch (promise) {
        case Promise::programmed:
            return "every record acknowledged";
        case Promise::running:
            return "the device runs";
        case Promise::version:
            break;
    }
    return "the device says the image's version";
}

}  // namespace

void ReportMaker::concluded(const Outcome& outcome, const Verdict& verdict) {
    outcome_ = outcome;
    verdict_ = verdict;
    time_ = s_.platform.runtime.timestamp();
    adapter_ = {};
    constexpr std::size_t kPrefix = 3;  // "COM"
    const auto& port = outcome.facts.portName;
    if (port.compare(0, kPrefix, "COM") != 0) return;
    const auto node = s_.platform.ports.devicePath(static_cast<int>(leadingNumber(port.substr(kPrefix))));
    if (node) adapter_ = s_.platform.inspector.adapterOf(*node);
}

/// "name: value" lines; what is not known has none.
std::string ReportMaker::about() const {
    const auto& facts = outcome_.facts;
    const auto& image = facts.image;
    std::string text;
    const auto add = [&text](const char* name, const std::string& value) {
        if (!value.empty()) text += std::string(name) + ": " + onOneLine(value) + "\n";
    };
    add("program", "Corvane " + programVersion());
    add("kernel", s_.platform.inspector.kernel());
    add("saved", time_);
    add("exit status", std::to_string(exitStatus(outcome_)));
    add("port", toUtf8(facts.port));
    add("line", facts.settings);
    add("protocol", facts.protocolName);
    add("device", toUtf8(facts.deviceVersion));
    add("device afterwards", toUtf8(facts.versionNow));
    add("adapter", adapter_.product);
    add("adapter's USB identity", adapter_.identity);
    add("adapter's driver", adapter_.driver);
    add("adapter's latency", adapter_.latency.empty() ? "" : adapter_.latency + " ms");
    if (!image.isNone()) {
        add("image", image.name());
        add("image's SHA-256", image.sha256());
        add("image's version", toUtf8(facts.version));
        add("image's records", std::to_string(image.records().size()));
        add("image's first record", std::string(image.records().empty() ? "" : image.records().front().substr(0, 9)));
    }
    if (facts.repeatedRecords) add("records sent again", std::to_string(*facts.repeatedRecords));
    add("mode", s_.choices.offLine ? "off line" : "on line");
    if (!s_.choices.offLine) add("server", s_.choices.server);
    add("promise", nameOf(s_.choices.promise));
    return text;
}

/// What firmware.inf says of the image, where that came from there.
std::string ReportMaker::section() const {
    const auto* information = s_.inf.information();
    if (!information || s_.choices.isLocalFile()) return {};
    const auto& facts = outcome_.facts;
    for (const auto& record : information->records()) {
        if (record.product != facts.product || record.version != facts.version) continue;
        return toUtf8("[" + record.section + "]\nPRODUCT=" + record.product + "\nVERSION=" + record.version +
                      "\nDESC=" + record.description + "\nFILE=" + record.file + "\n");
    }
    return {};
}

std::vector<std::string> ReportMaker::contents() const {
    const auto& image = outcome_.facts.image;
    std::vector<std::string> lines = {
        "Every byte that was sent and received, with its time; what was asked and answered.",
        "The log, what was said at the end, and the versions of program, kernel and adapter."};
    if (!image.isNone()) lines.push_back("The name and the SHA-256 of " + image.name() + ".");
    if (outcome_.facts.repeatedRecords) lines.push_back("The records of the image as they were sent to the device.");
    if (withImage && !image.isNone()) lines.push_back("The file " + image.name() + " itself.");
    lines.push_back("No password is in it.");
    return lines;
}

std::vector<ArchivedFile> ReportMaker::files() const {
    std::string why;
    const auto recording = s_.tape.text();
    const auto events = parseRecording(recording, why);
    const auto log = replaceAll(toUtf8(events ? logOf(*events) : why), "\r\n", "\n");
    std::vector<ArchivedFile> files = {{"about.txt", about()},
                                       {"verdict.txt", joined(verdictLines(verdict_), "\n") + "\n"},
                                       {"verdict.json", verdictJson(verdict_) + "\n"},
                                       {"log.txt", log},
                                       {"section.txt", section()}};
    for (auto& file : files) file.content = s_.tape.withoutSecrets(std::move(file.content));
    std::erase_if(files, [](const ArchivedFile& file) { return file.content.empty(); });
    files.push_back({"recording.txt", recording});
    const auto& image = outcome_.facts.image;
    if (withImage && !image.isNone()) files.push_back({"image.hex", image.bytes()});
    return files;
}

std::string ReportMaker::save(const std::string& path) const {
    std::string why;
    const auto zip = packed(files(), why);
    return zip.empty() ? why : s_.platform.files.replace(path, zip, FileStore::Named::byOperator);
}

std::string ReportMaker::fileName() const {
    auto name = time_ + (outcome_.facts.portName.empty() ? "" : "-" + toUtf8(outcome_.facts.portName));
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == ' ' || c == ':' || c == '/'; }, '-');
    return name + kExtension;
}

std::string ReportMaker::saveIn(const std::string& folder, std::string& path) const {
    path = folder + "/" + fileName();
    auto problem = s_.platform.files.makeFolder(folder);
    return problem.empty() ? save(path) : problem;
}

}  // namespace corvane
