#include "run/JobRecord.h"

#include <algorithm>
#include <filesystem>

#include "platform/files/Files.h"
#include "run/Verdict.h"
#include "text/Cp1252.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kFirst[] = "time,port,";  // of the head line, whichever version has written it
constexpr char kHead[] = "time,port,device before,device after,image,SHA-256,repeated records,verdict,signed by";

/// Also those of two bytes, U+0080 to U+009F.
std::string withoutControls(const std::string& utf8) {
    std::string text;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto code = static_cast<unsigned char>(utf8[at]);
        const auto next = static_cast<unsigned char>(at + 1 < utf8.size() ? utf8[at + 1] : '\0');
        const bool isPair = code == 0xC2 && next >= 0x80 && next < 0xA0;
        text += isPair || code < 0x20 || code == 0x7F ? ' ' : utf8[at];
        if (isPair) ++at;
    }
    return text;
}

std::string csvField(const std::string& given) {
    auto text = withoutControls(given);
    const auto first = trimmed(text).substr(0, 1);
    if (!first.empty() && std::string_view("=+-@").find(first.front()) != std::string_view::npos) text.insert(0, "'");
    if (text.find_first_of("\",") == std::string::npos) return text;
    return "\"" + replaceAll(text, "\"", "\"\"") + "\"";
}

}  // namespace

Job jobOf(const Outcome& outcome, const std::string& time) {
    const auto& known = outcome.facts;
    Job job;
    job.time = time;
    job.port = toUtf8(known.port);
    job.versionBefore = toUtf8(known.deviceVersion);
    job.versionAfter = toUtf8(known.versionNow);
    job.image = known.image.name();
    job.digest = known.image.sha256();
    job.repeatedRecords = known.repeatedRecords.value_or(0);
    job.verdict = verdictName(kindOf(outcome));
    job.signedBy = known.vouching.name;
    return job;
}

std::string csvLine(const Job& job) {
    std::vector<std::string> fields;
    for (const auto* text : {&job.time, &job.port, &job.versionBefore, &job.versionAfter, &job.image, &job.digest}) {
        fields.push_back(csvField(*text));
    }
    fields.push_back(std::to_string(job.repeatedRecords));
    fields.push_back(job.verdict);
    fields.push_back(csvField(job.signedBy));
    return joined(fields, ",");
}

std::vector<std::string> jobFields(std::string_view line) {
    std::vector<std::string> fields(1);
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && isQuoted && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back() += line[++i];
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == ',' && !isQuoted) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

std::string JobRecord::add(const Job& job) {
    if (job.verdict == verdictName(Verdict::Kind::updated)) ++updated_;
    const auto folder = std::filesystem::path(path_).parent_path().string();
    const auto why = folder.empty() ? std::string() : files_.makeFolder(folder);
    if (!why.empty()) return "no folder can be made: " + why;
    return files_.append(path_, std::string(kHead) + "\r\n", csvLine(job) + "\r\n", named_);
}

std::vector<std::string> JobRecord::last(std::size_t most) const {
    std::vector<std::string> all;
    try {
        const auto content = readFile(path_);
        std::string_view line;
        for (Lines lines(content); lines.next(line);) {
            if (!line.empty() && !line.starts_with(kFirst)) all.emplace_back(line);
        }
    } catch (const RuntimeError&) {
        return {};  // no record yet
    }
    std::reverse(all.begin(), all.end());
    if (all.size() > most) all.resize(most);
    return all;
}

}  // namespace corvane
