#include "console/Console.h"
#include "console/TerminalText.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr int kNoSuchDevice = 1, kNoJournal = 4;

using Runs = std::vector<InterruptedRun>;

/// A row each, or with --json one object.
void print(Console& console, const Arguments& arguments, const Runs& runs) {
    std::vector<std::string> objects;
    for (const auto& run : runs) {
        const std::pair<const char*, std::string> fields[] = {
            {"port", run.port},   {"time", run.time},  {"device", run.device}, {"firmware", nameOf(run.firmware)},
            {"image", run.image}, {"place", run.place}};
        std::vector<std::string> cells, pairs;
        for (const auto& [key, value] : fields) {
            cells.push_back(withoutControls(value));
            pairs.push_back(jsonString(key) + ":" + jsonString(value));
        }
        if (!run.recording.empty()) pairs.push_back("\"recording\":" + jsonString(run.recording));
        objects.push_back("{" + joined(pairs, ",") + "}");
        if (!arguments.json) writeHarmless(console.out, joined(cells, "\t") + "\n");
    }
    if (arguments.json) console.out.write("{\"lost\":[" + joined(objects, ",") + "]}\n");
}

/// False after saying that nobody knows.
bool isReadable(CommandScope& scope) {
    const auto fault = scope.updater.journal().fault();
    if (!fault.empty()) scope.face.say("The journal " + scope.updater.journal().path() + ": " + fault + ".");
    return fault.empty();
}

}  // namespace

int lostCommand(Console& console, const Arguments& arguments) {
    CommandScope scope(console, arguments, console.err, false);
    if (!isReadable(scope)) return scope.end(kNoJournal);
    const auto left = scope.updater.journal().left();
    print(console, arguments, left);
    for (const auto& run : left) {
        scope.face.say(run.text());
        if (!run.recording.empty()) scope.face.say("What happened: corvane-cli explain " + run.recording);
    }
    if (left.empty()) scope.face.say("No device was left in its boot loader.");
    return scope.end(0);
}

int forgetCommand(Console& console, const Arguments& arguments) {
    CommandScope scope(console, arguments, console.err, false);
    if (!isReadable(scope)) return scope.end(kNoJournal);
    auto& journal = scope.updater.journal();
    auto forgotten = journal.left();
    if (arguments.subject != "all")
        std::erase_if(forgotten, [&](const auto& run) { return !equalsNoCase(run.port, arguments.subject); });
    if (forgotten.empty()) {
        scope.face.say(arguments.subject == "all" ? "No device was left in its boot loader."
                                                  : "No device was left at " + arguments.subject + ".");
        return scope.end(kNoSuchDevice);
    }
    if (const auto problem = journal.forget(forgotten); !problem.empty()) {
        scope.face.say("The journal " + journal.path() + " could not be written: " + problem + ".");
        return scope.end(kNoJournal);
    }
    print(console, arguments, forgotten);
    return scope.end(0);
}

}  // namespace corvane
