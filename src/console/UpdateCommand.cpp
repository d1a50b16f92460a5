#include "console/Console.h"
#include "platform/ProgramInfo.h"
#include "platform/files/Files.h"
#include "settings/LocalFile.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// What a signal does: Cancel while that is possible; a device that is being programmed must be finished first.
void interruptRun(CommandScope& scope) {
    auto& run = scope.updater.run();
    scope.updater.series().end();
    if (run.isRunning() && !run.isCancellable() && !scope.face.isAskingAboutHarm()) {
        scope.face.say("The device is being programmed and cannot be left like this; the run goes on to its end.");
        return;
    }
    scope.face.abandonQuestions();
    run.cancel();
}

bool loadImage(CommandScope& scope, const std::string& path) {
    auto& choices = scope.updater.choices;
    choices.useFile = true;
    if (LoadHexInfo(choices, path, scope.updater.platform().digest)) return true;
    scope.face.say(path + ": " + choices.programLabel() + " The file " + choices.imageProblem.words + ".");
    return false;
}

/// The one port that the scan keeps to, spelled as the system spells it.
void keepToPort(CommandScope& scope, const std::string& wanted) {
    for (const auto& name : scope.updater.scanner().portNames()) {
        if (equalsNoCase(name, wanted)) return scope.updater.scanner().onlyPort(name);
    }
    scope.face.say("There is no port " + wanted + "; corvane-cli ports lists those that are there.");
    scope.updater.scanner().onlyPort(wanted);
}

/// What the file is to this program; empty when it is nothing: an output that is written over it would destroy it.
std::string roleOf(const std::string& path, CommandScope& scope, const Arguments& arguments) {
    const auto& platform = scope.updater.platform();
    std::vector<std::pair<std::string, const char*>> files = {
        {platform.ports.file(), "the list of the ports"},
        {platform.settings.file(kProgramTitle), "the settings file"},
        {platform.folder.resolve("\\firmware.inf"), "the list of the images"},
        {scope.updater.journal().path(), "the journal"}};
    if (arguments.file) files.emplace_back(*arguments.file, "the image");
    const auto downloads = platform.folder.resolve("\\Download");
    for (const auto& name : filesIn(downloads)) files.emplace_back(downloads + "/" + name, "a downloaded image");
    for (const auto& [file, role] : files) {
        if (!file.empty() && isSameFile(path, file)) return role;
    }
    return {};
}

/// Whether the files that are to be written may be, and can.
bool openOutputs(CommandScope& scope, const Arguments& arguments) {
    const auto refuse = [&scope](const std::string& words) {
        scope.face.say(words + ".");
        return false;
    };
    const auto& log = arguments.logFile;
    const auto& record = arguments.record;
    if (record) {
        const auto role = roleOf(*record, scope, arguments);
        if (!role.empty()) return refuse("The job record " + *record + " is " + role);
        if (isSpecialFile(*record) || FolderExists(*record))
            return refuse("The job record " + *record + " is no ordinary file");
        scope.updater.jobs().keepIn(*record);
    }
    if (const auto& report = arguments.report) {
        const auto role = isSameFile(*report, scope.updater.jobs().path()) ? "the job record"
                          : log && isSameFile(*report, *log)               ? "the log file"
                                                                           : roleOf(*report, scope, arguments);
        if (!role.empty()) return refuse("The report " + *report + " is " + role);
        if (isSpecialFile(*report) || FolderExists(*report))
            return refuse("The report " + *report + " is no ordinary file");
    }
    if (!log) return true;
    const bool isRecord = isSameFile(*log, scope.updater.jobs().path());
    const auto role = isRecord ? "the job record" : roleOf(*log, scope, arguments);
    if (!role.empty()) return refuse("The log file " + *log + " is " + role);
    std::string why;
    auto file = scope.updater.platform().files.create(*log, why);
    if (!file) return refuse("The log file " + *log + " cannot be written: " + why);
    scope.printer.copyTo(std::move(file));
    return true;
}

/// Saves what can be sent of the run, where that was asked for. What cannot be saved does not change how it ended.
void saveReports(CommandScope& scope, const Arguments& arguments, int code) {
    const auto tell = [&scope](const std::string& path, const std::string& problem) {
        scope.face.say(problem.empty() ? "A report of this run lies in " + path + "; corvane-cli explain reads it."
                                       : "The report " + path + " could not be written: " + problem + ".");
    };
    auto& maker = scope.updater.reports();
    maker.withImage = arguments.reportWithImage;
    const bool isOnFailure = arguments.reportOnFailure && code != 0;
    if (!arguments.report && !isOnFailure) return;
    for (const auto& line : maker.contents()) scope.face.say("In the report: " + line);
    if (arguments.report) tell(*arguments.report, maker.save(*arguments.report));
    if (!isOnFailure) return;
    std::string path;
    const auto problem = maker.saveIn(*arguments.reportOnFailure, path);
    tell(path, problem);
}

int perform(CommandScope& scope, const Arguments& arguments) {
    constexpr int kEndedWithoutUpdate = 1;
    if (arguments.file && !loadImage(scope, *arguments.file)) return kEndedWithoutUpdate;
    if (arguments.port) keepToPort(scope, *arguments.port);
    for (const auto& left : scope.updater.journal().left()) scope.face.say(left.text());
    if (arguments.verify) scope.updater.choices.promise = Promise::version;
    if (arguments.noVerify) scope.updater.choices.promise = Promise::programmed;
    scope.updater.series().begin();
    for (bool isFirst = true;; isFirst = false) {
        const auto outcome = scope.updater.start(arguments.force, !isFirst);
        const auto verdict = scope.updater.conclude(outcome);
        for (const auto& line : verdictLines(verdict)) scope.face.say(line);
        scope.printer.verdict(verdict);
        const int code = exitStatus(outcome);
        saveReports(scope, arguments, code);
        if (arguments.repeat && scope.updater.series().next(outcome)) continue;
        if (arguments.repeat)
            scope.face.say("Devices updated: " + std::to_string(scope.updater.jobs().updatedDevices()) + ".");
        return code;
    }
}

}  // namespace

int updateCommand(Console& console, const Arguments& arguments) {
    constexpr int kWrongUsage = 2;
    CommandScope scope(console, arguments, console.out, arguments.json);
    if (!openOutputs(scope, arguments)) return kWrongUsage;
    console.interrupt = [&scope] { interruptRun(scope); };
    const int code = scope.end(perform(scope, arguments));
    if (const auto failure = scope.printer.copyFailure(); !failure.empty())
        scope.face.say("The log file " + *arguments.logFile + " is not complete: " + failure + ".");
    scope.printer.result(code);
    return code;
}

}  // namespace corvane
