#include "run/JobRecord.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/Files.h"
#include "run/Verdict.h"
#include "text/Cp1252.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kHead[] = "time,port,device before,device after,image,SHA-256,repeated records,verdict";

std::string csvField(std::string text) {
    if (!text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos) text.insert(0, "'");
    if (text.find_first_of("\",\r\n") == std::string::npos) return text;
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
    return job;
}

std::string csvLine(const Job& job) {
    std::vector<std::string> fields;
    for (const auto* text : {&job.time, &job.port, &job.versionBefore, &job.versionAfter, &job.image, &job.digest}) {
        fields.push_back(csvField(*text));
    }
    fields.push_back(std::to_string(job.repeatedRecords));
    fields.push_back(job.verdict);
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

bool JobRecord::add(const Job& job) {
    if (job.verdict == verdictName(Verdict::Kind::updated)) ++updated_;
    const auto folder = std::filesystem::path(path_).parent_path().string();
    if (!folder.empty() && !makeFolder(folder)) return false;
    const bool isNew = !FileExists(path_);
    std::ofstream file(path_, std::ios::binary | std::ios::app);
    if (isNew) file << kHead << "\r\n";
    file << csvLine(job) << "\r\n";
    return static_cast<bool>(file.flush());
}

std::vector<std::string> JobRecord::last(std::size_t most) const {
    std::vector<std::string> all;
    try {
        const auto content = readFile(path_);
        std::string_view line;
        for (Lines lines(content); lines.next(line);) {
            if (!line.empty() && line != kHead) all.emplace_back(line);
        }
    } catch (const RuntimeError&) {
        return {};  // no record yet
    }
    std::reverse(all.begin(), all.end());
    if (all.size() > most) all.resize(most);
    return all;
}

}  // namespace corvane
