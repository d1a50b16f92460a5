// What the user's own files and the command lines hold.

#include "console/Arguments.h"
#include "console/TerminalText.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/RawIni.h"
#include "platform/serial/PortMapFile.h"
#include "run/JobRecord.h"
#include "run/RunJournal.h"
#include "support/FakeProgramFolder.h"
#include "support/FakeSystem.h"
#include "support/ScriptedPeer.h"
#include "support/SerialBench.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/SettingsText.h"
#include "text/Text.h"

namespace corvane::fuzz {
namespace {

/// "key" or "group/key".
bool isPlainName(const std::string& name) {
    const auto slash = name.find('/');
    const auto key = name.substr(slash + 1);
    return trimmed(key) == key && !key.empty() && slash != 0 && name.find_first_of("[]=;#\xEF \t") == name.npos &&
           key.find('/') == key.npos;
}

/// A terminal that must not be commanded by what it is given.
struct Screen : TextSink {
    void write(std::string_view utf8) override {
        require(utf8.find('\x1B') == utf8.npos && utf8.find("\xC2\x9B") == utf8.npos, "a terminal is not commanded");
    }
    bool isTerminal() const override { return true; }
};

}  // namespace

/// The line settings of an open port: what was taken is read back, and is taken again.
void settings_text(std::string_view bytes) {
    fakes::ScriptedPeer nobody;
    fakes::SerialBench bench;
    bench.open(nobody);
    auto& port = bench.port;
    for (Input input(bytes); !input.isEmpty();) {
        const std::string text(input.upTo('\n'));
        const auto before = port.GetCOMMSettings(port.CommID());
        const bool isTaken = port.SetCOMMSettings(port.CommID(), text);
        const auto after = port.GetCOMMSettings(port.CommID());
        require(isTaken ? !after.empty() && port.SetCOMMSettings(port.CommID(), after) : after == before,
                "what was taken can be set again, what was refused changes nothing");
        require(port.GetCOMMSettings(port.CommID()) == after, "and is the same");
        try {
            port.Settings(text);
        } catch (const RuntimeError&) {
            // what is no setting
        }
        require(parseSettingsText(port.Settings()).has_value(), "a port always has settings");
    }
}

void settings_file(std::string_view bytes) {
    auto settings = readRawIni(bytes);
    readRawIni(writeRawIni(settings));
    // A name that nobody gives (one that begins like a comment or a file, or has a slash of its own) need not survive.
    std::erase_if(settings, [](const auto& setting) { return !isPlainName(setting.first); });
    require(readRawIni(writeRawIni(settings)) == settings, "settings that were written are read back");
}

void port_map(std::string_view bytes) {
    const fakes::ScratchFolder folder;
    const auto file = readPortMapFile(folder.file("serialcomm.conf", std::string(bytes)));
    for (const auto& [number, path] : file.paths) {
        require(number >= 1 && number <= 256 && path.compare(0, 1, "/") == 0, "a port has a number and a path");
    }
}

/// The journal of devices without firmware and the record of jobs.
void journal(std::string_view bytes) {
    const fakes::FakeProgramFolder folder;
    folder.data.file("Corvane/interrupted-runs", std::string(bytes));
    fakes::FakeFileStore files;
    fakes::FakeProcesses processes;
    RunJournal journal(folder, files, processes);
    const auto runs = journal.left();
    for (const auto& run : runs) run.text();
    Input input(bytes);
    const auto next = [&input] { return std::string(input.upTo('|')); };
    const InterruptedRun run{next(), "COM" + next(), next(), next()};
    require(journal.begin(run, input.isEmpty()).empty() && journal.leave().empty(), "a run can be remembered");
    const auto left = journal.left();
    require(left.size() <= runs.size() + 1 && !left.empty(), "and is one more at most");
    require(journal.forget({left.back()}).empty() && journal.left().size() + 1 == left.size(),
            "one that is well is forgotten");

    folder.data.file("Corvane/jobs.csv", std::string(bytes));
    JobRecord record(folder, files);
    require(record.last(5).size() <= 5, "as many as were asked for");
    const Job job{next(), next(), next(), next(), next(), next(), 7, "updated", next()};
    const auto fields = jobFields(csvLine(job));
    require(fields.size() == 9 && fields[6] == "7" && fields[7] == "updated", "a line has its nine fields");
    require(fields[0] == job.time || fields[0] == "'" + job.time, "a field is what it was");
    require(fields[5].find_first_of("=+-@") != 0, "no field is a formula");
}

void arguments(std::string_view bytes) {
    Input input(bytes);
    std::vector<std::string> words;
    while (!input.isEmpty()) words.emplace_back(input.upTo('\n'));
    std::string problem;
    const auto arguments = parseArguments(words, problem);
    require(arguments.has_value() == problem.empty(), "wrong usage is explained, and nothing else is");
    if (!arguments || arguments->command == Arguments::Command::help) return;
    require(!arguments->file || arguments->offLine == true, "a file means off line");
    require(!arguments->server || arguments->offLine == false, "a server means on line");
}

void texts(std::string_view bytes) {
    const std::string text(bytes);
    require(fromUtf8(toUtf8(text)) == text, "Windows-1252 survives the way to UTF-8 and back");
    for (const auto& made : {toUtf8(text), soundUtf8(text), jsonString(text)}) {
        require(soundUtf8(made) == made, "what is made is UTF-8");
    }
    const auto json = jsonString(text);
    require(std::none_of(json.begin(), json.end(), [](char c) { return c >= 0 && c < ' '; }), "JSON has no controls");
    Screen screen;
    writeHarmless(screen, toUtf8(text));
    const double number = leadingNumber(text);
    try {
        require(toLong(number) == roundToEven(number), "a number is rounded");
    } catch (const RuntimeError&) {
        require(number > 2147483647 || number < -2147483648.0, "only what does not fit overflows");
    }
    require(joined(split(text, ','), ",") == text, "pieces make the whole");
    if (text.size() > 1) replaceAll(text, text.substr(0, 1), text);
}

}  // namespace corvane::fuzz
