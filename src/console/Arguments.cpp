#include "console/Arguments.h"

#include <algorithm>
#include <functional>

#include "settings/ConnectionSettings.h"

namespace corvane {
namespace {

using Command = Arguments::Command;

struct Option {
    const char* name;
    std::vector<Command> commands;
    std::function<void(Arguments&)> set;                           // without a value
    std::function<void(Arguments&, const std::string&)> setValue;  // with one
};

const std::vector<Option>& options() {
    static const auto value = [](std::optional<std::string> Arguments::*member) {
        return [member](Arguments& arguments, const std::string& text) { arguments.*member = text; };
    };
    static const auto flag = [](bool Arguments::*member) {
        return [member](Arguments& arguments) { arguments.*member = true; };
    };
    static const std::vector<Option> all = {
        {"--offline", {Command::update, Command::images}, flag(&Arguments::offLineWanted), nullptr},
        {"--online", {Command::update}, flag(&Arguments::onLineWanted), nullptr},
        {"--file", {Command::update}, nullptr, value(&Arguments::file)},
        {"--server", {Command::update}, nullptr, value(&Arguments::server)},
        {"--user", {Command::update}, nullptr, value(&Arguments::user)},
        {"--tls", {Command::update, Command::images, Command::checkSite}, nullptr, value(&Arguments::tls)},
        {"--tls-ca",
         {Command::update, Command::images, Command::checkSite},
         nullptr,
         value(&Arguments::tlsAuthorities)},
        {"--select", {Command::update}, nullptr, value(&Arguments::select)},
        {"--port", {Command::update, Command::selftest}, nullptr, value(&Arguments::port)},
        {"--log", {Command::update}, nullptr, value(&Arguments::logFile)},
        {"--record", {Command::update}, nullptr, value(&Arguments::record)},
        {"--report", {Command::update}, nullptr, value(&Arguments::report)},
        {"--report-on-failure", {Command::update}, nullptr, value(&Arguments::reportOnFailure)},
        {"--report-with-image", {Command::update}, flag(&Arguments::reportWithImage), nullptr},
        {"--loopback", {Command::selftest}, flag(&Arguments::loopback), nullptr},
        {"--bytes", {Command::explain}, flag(&Arguments::bytes), nullptr},
        {"--timing", {Command::explain}, flag(&Arguments::timing), nullptr},
        {"--force", {Command::update, Command::scan}, flag(&Arguments::force), nullptr},
        {"--yes", {Command::update}, flag(&Arguments::yes), nullptr},
        {"--accept-unsound", {Command::update}, flag(&Arguments::acceptUnsound), nullptr},
        {"--accept-older-list", {Command::update, Command::images}, flag(&Arguments::acceptOlderList), nullptr},
        {"--verify", {Command::update}, flag(&Arguments::verify), nullptr},
        {"--no-verify", {Command::update}, flag(&Arguments::noVerify), nullptr},
        {"--repeat", {Command::update}, flag(&Arguments::repeat), nullptr},
        {"--write-sha256", {Command::checkSite}, flag(&Arguments::writeDigests), nullptr},
        {"--self-update", {Command::update}, flag(&Arguments::selfUpdate), nullptr},
        {"--json",
         {Command::update, Command::scan, Command::ports, Command::images, Command::lost, Command::forget,
          Command::check, Command::checkSite, Command::explain, Command::selftest},
         flag(&Arguments::json),
         nullptr},
    };
    return all;
}

std::optional<Command> commandOf(const std::string& word) {
    static const std::vector<std::pair<const char*, Command>> names = {
        {"update", Command::update},     {"scan", Command::scan},
        {"ports", Command::ports},       {"lost", Command::lost},
        {"forget", Command::forget},     {"images", Command::images},
        {"check", Command::check},       {"check-site", Command::checkSite},
        {"explain", Command::explain},   {"selftest", Command::selftest},
        {"--version", Command::version}, {"--help", Command::help},
        {"-h", Command::help},
    };
    for (const auto& [name, command] : names) {
        if (word == name) return command;
    }
    return std::nullopt;
}

/// What the word behind a command is; null when it takes none.
const char* subjectOf(Command command) {
    if (command == Command::forget) return "the port of a device that was left, or \"all\"";
    if (command == Command::explain) return "the name of a report";
    return command == Command::check || command == Command::checkSite ? "the name of what it checks" : nullptr;
}

/// Sets one option, taking its value from the words behind it; false with a problem.
bool takeOption(const std::vector<std::string>& words, std::size_t& at, Arguments& arguments, std::string& problem) {
    auto name = words[at];
    std::optional<std::string> value;
    if (const auto equals = name.find('='); equals != std::string::npos) {
        value = name.substr(equals + 1);
        name.erase(equals);
    }
    const auto found =
        std::find_if(options().begin(), options().end(), [&](const Option& o) { return o.name == name; });
    const auto fits = [&](const Option& option) {
        return std::find(option.commands.begin(), option.commands.end(), arguments.command) != option.commands.end();
    };
    if (found == options().end() || !fits(*found)) {
        problem = "this command has no option " + name;
        return false;
    }
    if (found->set) {
        if (value) problem = "the option " + name + " takes no value";
        found->set(arguments);
        return !value;
    }
    if (!value && at + 1 < words.size()) value = words[++at];
    if (!value) {
        problem = "the option " + name + " needs a value";
        return false;
    }
    if (name == "--port" && value->empty()) {
        problem = "the option --port needs the name of a port";  // an empty variable of a script must not mean any port
        return false;
    }
    if (name == "--tls" && !encryptionNamed(*value)) {
        problem = "the option --tls takes off, try or require";
        return false;
    }
    found->setValue(arguments, *value);
    return true;
}

/// --file means off line, --server means on line; what contradicts them, or itself, is wrong.
bool settleMode(Arguments& arguments, std::string& problem) {
    const bool offLine = arguments.offLineWanted || arguments.file;
    const bool onLine = arguments.onLineWanted || arguments.server;
    if (offLine && onLine) {
        problem = arguments.file ? "--file is a local image: it does not go with --online or --server"
                                 : "--offline does not go with --online or --server";
        return false;
    }
    if (arguments.verify && arguments.noVerify) {
        problem = "--verify does not go with --no-verify";
        return false;
    }
    if (arguments.command == Command::selftest && (!arguments.port || !arguments.loopback)) {
        problem = "selftest needs --port COMn and --loopback: the port's own output has to be wired to its input";
        return false;
    }
    if (arguments.reportWithImage && !arguments.report && !arguments.reportOnFailure) {
        problem = "--report-with-image needs a --report or --report-on-failure to be put into";
        return false;
    }
    if (arguments.repeat && !arguments.yes) {
        problem = "--repeat needs --yes: from the second device on nobody is asked";
        return false;
    }
    if (offLine || onLine) arguments.offLine = offLine;
    return true;
}

}  // namespace

std::optional<Arguments> parseArguments(const std::vector<std::string>& words, std::string& problem) {
    if (words.empty()) {
        problem = "no command is given";
        return std::nullopt;
    }
    const auto command = commandOf(words.front());
    if (!command) {
        problem = "there is no command " + words.front();
        return std::nullopt;
    }
    Arguments arguments;
    arguments.command = *command;
    for (std::size_t at = 1; at < words.size(); ++at) {
        if (words[at] == "--help") {
            arguments.command = Command::help;
            return arguments;
        }
        if (words[at].compare(0, 1, "-") == 0 && words[at].size() > 1) {
            if (!takeOption(words, at, arguments, problem)) return std::nullopt;
        } else if (subjectOf(*command) && arguments.subject.empty() && !words[at].empty()) {
            arguments.subject = words[at];
        } else {
            problem = "\"" + words[at] + "\" is one word too many";
            return std::nullopt;
        }
    }
    if (const auto* subject = subjectOf(*command); subject && arguments.subject.empty()) {
        problem = words.front() + " needs " + subject;
        return std::nullopt;
    }
    if (!settleMode(arguments, problem)) return std::nullopt;
    return arguments;
}

std::string usageText() {
    return R"(Usage: corvane-cli COMMAND [OPTIONS]

  update [--offline|--online] [--file IMAGE.hex] [--server HOST[:PORT]] [--user NAME]
         [--select SECTION] [--force] [--yes] [--accept-unsound] [--self-update]
         [--tls off|try|require] [--tls-ca FILE] [--accept-older-list] [--port COMn]
         [--verify|--no-verify] [--repeat] [--log FILE] [--record FILE] [--report FILE]
         [--report-on-failure FOLDER] [--report-with-image] [--json]
                                          updates the attached device, and asks it afterwards whether
                                          it runs; with --verify it must say the image's version;
                                          with --repeat the next one that is connected follows
  scan [--force] [--json]                 finds the device, prints its port and version
  ports [--json]                          lists serial and HID ports
  images [--offline] [--tls off|try|require] [--tls-ca FILE] [--accept-older-list] [--json]
                                          lists what firmware.inf offers
  lost [--json]                           lists devices that an update left in their boot loaders
  forget PORT|all [--json]                takes devices off that list, because they are well
  check IMAGE.hex [--json]                says what is wrong with an image, and its memory map
  check-site FOLDER|ftp://... [--json]    says what an operator would get from a site
             [--tls off|try|require] [--tls-ca FILE]
             [--write-sha256]             first writes the digests of a FOLDER's images into firmware.inf
  explain FILE [--bytes] [--timing] [--json]
                                          says what a report tells: an account, the whole dialogue, or
                                          how long each record took
  selftest --port COMn --loopback [--json]
                                          tries out an adapter whose output is wired to its input
  --version | --help

The FTP password comes from CORVANE_FTP_PASSWORD or the stored settings, the device's
password from CORVANE_DEVICE_PASSWORD or a question on the terminal.

Exit status: 0 done, the device runs (with --no-verify: every record was acknowledged);
1 ended without an update (cancelled, declined, nothing suitable); 2 wrong usage; 3 no device;
4 site, firmware.inf or image not to be had; 5 boot loader, erase or programming failed (update
the device again with --force), or it waits in its boot loader with the new firmware complete;
6 programmed completely, but not heard of since, an answer too many, or (with --verify)
another version than the image's.
)";
}

}  // namespace corvane
