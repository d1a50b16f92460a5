#include "run/RunJournal.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>

#include "platform/files/Files.h"
#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Firmware = InterruptedRun::Firmware;
using Runs = std::vector<InterruptedRun>;

constexpr char kRecording[] = "recording-", kText[] = ".txt";
constexpr char kKept[] = "another program keeps it", kUnreadable[] = "it cannot be read";
constexpr std::array<const char*, 4> kFirmware = {"old", "uncertain", "none", "whole"};

/// Every value is a line of the file.
std::string withoutLineEnds(std::string text) {
    std::erase_if(text, [](char c) { return c == '\n' || c == '\r'; });
    return text;
}

/// A line for each value, "name=value", and an empty one.
std::string entryOf(const InterruptedRun& run) {
    const std::pair<const char*, std::string> values[] = {
        {"time", run.time},
        {"port", run.port},
        {"device", run.device},
        {"image", run.image},
        {"place", run.place},
        {"version", run.version},
        {"recording", run.recording},
        {"firmware", nameOf(run.firmware)},
        {"process", run.process.number == 0 ? "" : std::to_string(run.process.number) + " " + run.process.start}};
    std::string lines;
    for (const auto& [name, value] : values) lines.append(name).append("=").append(value).append("\n");
    return lines + "\n";
}

InterruptedRun runOf(std::map<std::string, std::string, std::less<>>& values) {
    InterruptedRun run{values["time"], values["port"], values["device"], values["image"], values["place"]};
    for (std::size_t i = 0; i < kFirmware.size(); ++i) {
        if (values["firmware"] == kFirmware[i]) run.firmware = static_cast<Firmware>(i);
    }
    run.version = values["version"];
    run.recording = values["recording"];
    const auto& process = values["process"];
    if (const auto blank = process.find(' '); blank != std::string::npos)
        run.process = {static_cast<int>(leadingNumber(process.substr(0, 9))), process.substr(blank + 1)};
    return run;
}

/// Entries of the versions before 1.1: four lines, without names.
Runs readOld(Lines lines) {
    Runs runs;
    std::string_view line;
    for (InterruptedRun run;; runs.push_back(run)) {
        for (auto* value : {&run.time, &run.port, &run.device, &run.image}) {
            if (!lines.next(line)) return runs;
            *value = line;
        }
    }
}

Runs parsed(const std::string& content) {
    if (!content.starts_with("time=")) return readOld(Lines(content));
    Runs runs;
    std::map<std::string, std::string, std::less<>> values;
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        const auto equals = line.find('=');
        if (equals != std::string_view::npos) {
            values[std::string(line.substr(0, equals))] = line.substr(equals + 1);
        } else if (line.empty()) {
            if (!values["port"].empty()) runs.push_back(runOf(values));
            values.clear();
        }
    }
    return runs;
}

/// Nothing when it is there and cannot be read: what it says must not be lost then.
std::optional<Runs> readJournal(const std::string& path) {
    try {
        return parsed(readFile(path));
    } catch (const RuntimeError&) {
        if (FileExists(path)) return std::nullopt;
        return Runs();
    }
}

bool isSamePlace(const InterruptedRun& one, const InterruptedRun& other) {
    return one.place.empty() || other.place.empty() ? one.port == other.port : one.place == other.place;
}

/// How much speaks for it that an entry is about a device in its boot loader; 0 for nothing.
int likeness(const InterruptedRun& entry, const InterruptedRun& run) {
    if (!entry.place.empty() && entry.place == run.place) return 3;
    if (isSamePlace(entry, run)) return 2;
    return entry.image == run.image ? 1 : 0;
}

/// Whether the device of an entry may be one that runs its application and calls itself so.
bool mayRun(const InterruptedRun& entry, const std::string& device) {
    const bool isOldPossible = entry.firmware == Firmware::old || entry.firmware == Firmware::uncertain;
    const bool isInstalled = !entry.version.empty() && containsNoCase(device, entry.version);
    return entry.firmware == Firmware::whole || isInstalled || (isOldPossible && entry.device == device);
}

/// The entry of an earlier run that this device is in: one that runs its application cannot be the one that was left
/// without any, even though it is at the same place. In its boot loader it may have moved to another place, and is
/// known by its image, or because nothing else is missed.
Runs::iterator entryFor(const InterruptedRun& run, bool isInBootLoader, Runs& runs,
                        const std::vector<Runs::iterator>& left) {
    auto found = runs.end();
    for (const auto entry : left) {
        if (isInBootLoader) {
            const bool isOnly = left.size() == 1;
            if (!isOnly && likeness(*entry, run) == 0) continue;
            if (found == runs.end() || likeness(*entry, run) >= likeness(*found, run)) found = entry;
        } else if (isSamePlace(*entry, run) && mayRun(*entry, run.device)) {
            found = entry;
        }
    }
    return found;
}

}  // namespace

const char* nameOf(Firmware firmware) { return kFirmware[static_cast<std::size_t>(firmware)]; }

std::string InterruptedRun::brief() const {
    constexpr std::size_t kToTheMinute = 16;
    return time.substr(0, kToTheMinute) + ": " + port + ", " + device;
}

std::string InterruptedRun::text() const {
    const auto force = "force an update with the image " + image + ".";
    const auto at = " at " + brief() + (place.empty() ? "" : " (" + place + ")");
    switch (firmware) {
        case Firmware::old:
            return "An update was cut off before the erase" + at +
                   ". Switch the device off and on: it has its firmware still. If it does not start, " + force;
        case Firmware::uncertain:
            return "An update was cut off at the erase" + at +
                   ". Switch the device off and on: it may have its firmware still. If it does not start, " + force;
        case Firmware::whole:
            return "An update was cut off when all was programmed" + at +
                   ". Switch the device off and on: it has its new firmware. If it does not start, " + force;
        case Firmware::none:
            break;
    }
    return "A device was left in its boot loader" + at + ". To go on, " + force;
}

bool RunJournal::isAtWork(const InterruptedRun& run) const {
    return run.process.number != 0 && run.process != processes_.own() && processes_.isAlive(run.process);
}

std::vector<InterruptedRun> RunJournal::left() const {
    auto runs = readJournal(path()).value_or(Runs());
    std::erase_if(runs, [this](const auto& run) { return isAtWork(run) || run == own_; });
    return runs;
}

std::optional<InterruptedRun> RunJournal::confusedWith(const InterruptedRun& run) const {
    std::optional<InterruptedRun> here;
    bool isElsewhere = false;
    for (const auto& entry : left()) {
        if (!isSamePlace(entry, run))
            isElsewhere = isElsewhere || entry.image == run.image;
        else if (entry.image == run.image)
            return std::nullopt;
        else
            here = entry;
    }
    return isElsewhere ? here : std::nullopt;
}

std::string RunJournal::begin(InterruptedRun run, bool isInBootLoader) {
    constexpr std::size_t kMost = 1000;  // of a disk that always fails, or of whoever writes into the file
    for (auto* value : {&run.time, &run.port, &run.device, &run.image, &run.place, &run.version})
        *value = withoutLineEnds(std::move(*value));
    run.process = processes_.own();
    if (const auto why = files_.makeFolder(folder_.dataPath()); !why.empty()) return "no folder can be made: " + why;
    const auto lock = files_.lock(folder_.dataPath());
    if (!lock) return kKept;
    auto runs = readJournal(path());
    if (!runs) return kUnreadable;
    std::vector<Runs::iterator> left;
    for (auto entry = runs->begin(); entry != runs->end(); ++entry) {
        if (!isAtWork(*entry)) left.push_back(entry);
    }
    if (const auto earlier = entryFor(run, isInBootLoader, *runs, left); earlier != runs->end()) {
        if (isInBootLoader) run.device = earlier->device;  // it tells nothing of itself
        runs->erase(earlier);
    }
    if (runs->size() >= kMost) runs->erase(runs->begin());
    if (makeRecording) run.recording = withoutLineEnds(makeRecording(folder_.dataPath() + "/" + kRecording, kText));
    runs->push_back(run);
    auto problem = write(*runs);
    if (problem.empty()) own_ = run;
    return problem;
}

/// Reads all entries, has them changed and writes them.
template <typename Change>
std::string RunJournal::change(Change change) {
    const auto lock = files_.lock(folder_.dataPath());
    if (!lock) return kKept;
    auto runs = readJournal(path());
    if (!runs) return kUnreadable;
    change(*runs);
    return write(*runs);
}

/// Changes this process's entry, or takes it out: nothing is what it becomes then.
template <typename Change>
std::string RunJournal::changeOwn(Change changeEntry) {
    if (!own_) return {};
    std::optional<InterruptedRun> changed = own_;
    changeEntry(changed);
    auto problem = change([&](Runs& runs) {
        const auto found = std::find(runs.begin(), runs.end(), *own_);
        if (found != runs.end()) runs.erase(found);
        if (changed) runs.push_back(*changed);
    });
    if (problem.empty()) own_ = changed;
    return problem;
}

std::string RunJournal::note(Firmware firmware) {
    if (own_ && own_->firmware == firmware) return {};
    return changeOwn([firmware](auto& run) { run->firmware = firmware; });
}

std::string RunJournal::end() {
    return changeOwn([](auto& run) { run.reset(); });
}

std::string RunJournal::leave() {
    auto problem = changeOwn([](auto& run) { run->process = {}; });
    own_.reset();
    return problem;
}

std::string RunJournal::forget(const std::vector<InterruptedRun>& runs) {
    return change([&](Runs& all) {
        for (const auto& run : runs) {
            const auto found = std::find(all.begin(), all.end(), run);
            if (found != all.end()) all.erase(found);
        }
    });
}

std::string RunJournal::fault() const { return readJournal(path()) ? "" : kUnreadable; }

/// A journal without entries is no file.
std::string RunJournal::write(const std::vector<InterruptedRun>& runs) const {
    std::string content;
    for (const auto& run : runs) content += entryOf(run);
    auto problem = runs.empty() ? files_.remove(path()) : files_.replace(path(), content, FileStore::Named::byProgram);
    removeRecordings(runs);
    return problem;
}

/// Those that no entry names: of devices that are well, and one that a killed program made and did not come to name.
void RunJournal::removeRecordings(const std::vector<InterruptedRun>& runs) const {
    std::error_code none;
    for (std::filesystem::directory_iterator at(folder_.dataPath(), none), end; !none && at != end;
         at.increment(none)) {
        const auto file = at->path().string();
        if (!at->path().filename().string().starts_with(kRecording)) continue;
        const bool isNamed =
            std::any_of(runs.begin(), runs.end(), [&file](const auto& run) { return run.recording == file; });
        if (!isNamed) (void)files_.remove(file);  // the next change of the journal tries again
    }
}

}  // namespace corvane
