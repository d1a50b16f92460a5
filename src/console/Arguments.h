#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// What the command line asks for; texts in the system's bytes, which are UTF-8.
struct Arguments {
    enum class Command { update, scan, ports, images, lost, forget, check, checkSite, version, help };

    Command command = Command::help;
    std::string subject;  ///< what check and check-site look at, and forget forgets
    std::optional<std::string> file;
    std::optional<std::string> server;
    std::optional<std::string> user;
    std::optional<std::string> select;
    std::optional<std::string> port;
    std::optional<std::string> logFile;
    std::optional<std::string> record;
    std::optional<bool> offLine;  ///< as --offline, --online, --file or --server say; nothing when none does
    bool offLineWanted = false;   ///< --offline stood there
    bool onLineWanted = false;    ///< --online
    bool force = false;
    bool yes = false;
    bool selfUpdate = false;
    bool acceptUnsound = false;
    bool verify = false;
    bool noVerify = false;
    bool json = false;
    bool writeDigests = false;
};

/// Reads the words behind the program's name. Nothing when they are wrong, with a sentence about it in problem.
[[nodiscard]] std::optional<Arguments> parseArguments(const std::vector<std::string>& words, std::string& problem);

/// What --help prints.
std::string usageText();

}  // namespace corvane
