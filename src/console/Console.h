#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "console/ConsoleFace.h"

namespace corvane {

/// What a command works with: the platform, the streams, the terminal and the secrets of the environment.
struct Console {
    Platform& platform;
    TextSink& out;
    TextSink& err;
    Terminal& terminal;
    std::optional<std::string> ftpPassword;     ///< UTF-8
    std::optional<std::string> devicePassword;  ///< UTF-8
    std::function<void()> interrupt;            ///< set by the command: what a signal does
    FaceWitness witness = {};

    /// Runs the command that the arguments name; its exit status.
    int run(const Arguments& arguments);
};

/// One command of the program in progress: a workflow with the console as its face. The log goes to standard error
/// unless the command prints it.
class CommandScope {
public:
    CommandScope(Console& console, const Arguments& arguments, TextSink& logSink, bool json);
    ~CommandScope();
    CommandScope(const CommandScope&) = delete;
    CommandScope& operator=(const CommandScope&) = delete;

    /// Closes ports and site; hands the status through.
    int end(int code) {
        updater.shutDown();
        return code;
    }

    LogPrinter printer;
    ConsoleFace face;
    Updater updater;

private:
    Console& console_;
};

int updateCommand(Console& console, const Arguments& arguments);
int scanCommand(Console& console, const Arguments& arguments);
int portsCommand(Console& console, const Arguments& arguments);
int imagesCommand(Console& console, const Arguments& arguments);
int lostCommand(Console& console, const Arguments& arguments);
int forgetCommand(Console& console, const Arguments& arguments);
int checkCommand(Console& console, const Arguments& arguments);
int explainCommand(Console& console, const Arguments& arguments);
int selftestCommand(Console& console, const Arguments& arguments);
int checkSiteCommand(Console& console, const Arguments& arguments);

/// Answers --version and --help, for which nothing needs to be set up; False for any other command.
[[nodiscard]] bool answersAlone(const Arguments& arguments, TextSink& out);

}  // namespace corvane
