#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// What the command line asks for; texts in the system's bytes, which are UTF-8.
struct Arguments {
    enum class Command {
        update,
        scan,
        ports,
        images,
        lost,
        forget,
        check,
        checkSite,
        explain,
        selftest,
        version,
        help
    };

    Command command = Command::help;
    std::string subject;  ///< what check, check-site and explain look at, and forget forgets
    std::optional<std::string> file;
    std::optional<std::string> server;
    std::optional<std::string> user;
    std::optional<std::string> tls;  ///< off, try or require
    std::optional<std::string> tlsAuthorities;
    std::optional<std::string> select;
    std::optional<std::string> port;
    std::optional<std::string> logFile;
    std::optional<std::string> record;
    std::optional<std::string> report;           ///< where a report of the run goes
    std::optional<std::string> reportOnFailure;  ///< the folder of those of runs that did not update
    bool reportWithImage = false;
    std::optional<bool> offLine;  ///< as --offline, --online, --file or --server say; nothing when none does
    bool offLineWanted = false;   ///< --offline stood there
    bool onLineWanted = false;    ///< --online
    bool force = false;
    bool yes = false;
    bool selfUpdate = false;
    bool acceptUnsound = false;
    bool acceptOlderList = false;
    bool verify = false;
    bool noVerify = false;
    bool json = false;
    bool writeDigests = false;
    bool bytes = false;
    bool timing = false;
    bool repeat = false;
    bool loopback = false;
};

/// Reads the words behind the program's name. Nothing when they are wrong, with a sentence about it in problem.
[[nodiscard]] std::optional<Arguments> parseArguments(const std::vector<std::string>& words, std::string& problem);

/// What --help prints.
std::string usageText();

}  // namespace corvane
