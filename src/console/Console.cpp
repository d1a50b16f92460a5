#include "console/Console.h"

#include "platform/ProgramInfo.h"
#include "settings/StoredSettings.h"

namespace corvane {

CommandScope::CommandScope(Console& console, const Arguments& arguments, TextSink& logSink, bool json)
    : printer(logSink, json),
      face(arguments, printer, console.err, console.terminal, console.devicePassword),
      updater(console.platform, console.witness ? console.witness(face.face()) : face.face()),
      console_(console) {
    face.refusalReason = [this](const std::string& port) { return updater.refusal(port); };
    face.beforeScan = [this](const std::vector<std::string>& ports) { return updater.advisor().beforeScan(ports); };
    StoredSettings(console.platform.settings).load(updater.choices);
    auto& choices = updater.choices;
    if (arguments.offLine) choices.offLine = *arguments.offLine;
    if (arguments.server) choices.server = *arguments.server;
    if (arguments.user) choices.userName = *arguments.user;
    if (arguments.tls) choices.encryption = encryptionNamed(*arguments.tls);
    choices.authorities = arguments.tlsAuthorities;
    choices.acceptsOlderList = arguments.acceptOlderList;
    if (console.ftpPassword) choices.password = *console.ftpPassword;
    updater.selection().remembersEntry(false);
    for (const auto& problem : StoredSettings(console.platform.settings).problems()) face.say(problem);
    for (const auto& problem : console.platform.ports.problems()) face.say(problem);
    for (const auto& problem : updater.trust().problems()) face.say(problem);
}

CommandScope::~CommandScope() { console_.interrupt = nullptr; }

bool answersAlone(const Arguments& arguments, TextSink& out) {
    if (arguments.command == Arguments::Command::version) {
        out.write("corvane-cli " + programVersion() + "\n");
    } else if (arguments.command == Arguments::Command::help) {
        out.write(usageText());
    } else {
        return false;
    }
    return true;
}

int Console::run(const Arguments& arguments) {
    switch (arguments.command) {
        case Arguments::Command::update:
            return updateCommand(*this, arguments);
        case Arguments::Command::scan:
            return scanCommand(*this, arguments);
        case Arguments::Command::ports:
            return portsCommand(*this, arguments);
        case Arguments::Command::images:
            return imagesCommand(*this, arguments);
        case Arguments::Command::lost:
            return lostCommand(*this, arguments);
        case Arguments::Command::forget:
            return forgetCommand(*this, arguments);
        case Arguments::Command::check:
            return checkCommand(*this, arguments);
        case Arguments::Command::checkSite:
            return checkSiteCommand(*this, arguments);
        case Arguments::Command::explain:
            return explainCommand(*this, arguments);
        case Arguments::Command::selftest:
            return selftestCommand(*this, arguments);
        case Arguments::Command::version:
        case Arguments::Command::help:
            break;
    }
    return answersAlone(arguments, out) ? 0 : 2;
}

}  // namespace corvane
