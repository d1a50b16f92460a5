#include <filesystem>

#include "console/Console.h"
#include "settings/LocalFile.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// What a signal does: Cancel while that is possible; a device that is being programmed must be finished first.
void interruptRun(CommandScope& scope) {
    auto& run = scope.updater.run();
    if (run.isRunning() && !run.isCancellable() && !scope.face.isAskingAboutImage()) {
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

/// The log is written anew, so it must not be the image.
bool openLog(CommandScope& scope, const Arguments& arguments) {
    std::error_code error;
    const bool isImage = arguments.file && std::filesystem::equivalent(*arguments.logFile, *arguments.file, error);
    if (!isImage && scope.printer.copyTo(*arguments.logFile)) return true;
    scope.face.say("The log file " + *arguments.logFile + (isImage ? " is the image." : " cannot be written."));
    return false;
}

int perform(CommandScope& scope, const Arguments& arguments) {
    constexpr int kEndedWithoutUpdate = 1;
    if (arguments.file && !loadImage(scope, *arguments.file)) return kEndedWithoutUpdate;
    if (arguments.port) keepToPort(scope, *arguments.port);
    if (arguments.record) scope.updater.jobs().keepIn(*arguments.record);
    for (const auto& left : scope.updater.journal().read()) scope.face.say(left.text());
    if (arguments.verify) scope.updater.choices.promise = Promise::version;
    if (arguments.noVerify) scope.updater.choices.promise = Promise::programmed;
    const auto outcome = scope.updater.run().run(arguments.force);
    const auto verdict = scope.updater.conclude(outcome);
    for (const auto& line : verdictLines(verdict)) scope.face.say(line);
    scope.printer.verdict(verdict);
    return exitStatus(outcome);
}

}  // namespace

int updateCommand(Console& console, const Arguments& arguments) {
    constexpr int kWrongUsage = 2;
    CommandScope scope(console, arguments, console.out, arguments.json);
    if (arguments.logFile && !openLog(scope, arguments)) return kWrongUsage;
    console.interrupt = [&scope] { interruptRun(scope); };
    const int code = scope.end(perform(scope, arguments));
    if (!scope.printer.isCopyWhole())
        scope.face.say("The log file " + *arguments.logFile + " is not complete: writing failed.");
    scope.printer.result(code);
    return code;
}

}  // namespace corvane
