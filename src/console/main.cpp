#include <cstdlib>
#include <exception>
#include <optional>

#include "console/Console.h"
#include "platform/linux/LinuxConsole.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/Signals.h"
#include "platform/linux/files/StandardDescriptors.h"

namespace {

std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    return value && *value ? std::optional<std::string>(value) : std::nullopt;
}

int runProgram(const corvane::Arguments& arguments, corvane::StandardStream& out, corvane::StandardStream& err) {
    corvane::LinuxPlatform system;
    auto platform = system.seams();
    corvane::LinuxTerminal terminal(system.runtime());
    corvane::Console console{
        platform, out, err, terminal, environment("CORVANE_FTP_PASSWORD"), environment("CORVANE_DEVICE_PASSWORD"),
        nullptr};
    // Reading an image may never end when it is a pipe; so for "check" a signal ends the program, as it does by
    // default.
    std::optional<corvane::SignalSource> signals;
    if (arguments.command != corvane::Arguments::Command::check) {
        signals.emplace(system.runtime(), [&console] {
            if (console.interrupt) console.interrupt();
        });
    }
    platform.runtime.setPump([&] {
        out.flush();
        err.flush();
    });
    return console.run(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kWrongUsage = 2, kFailed = 4;
    corvane::fillStandardDescriptors();
    corvane::ignoreIdleSignals();
    auto out = corvane::StandardStream::output(), err = corvane::StandardStream::error();
    std::string problem;
    const auto arguments = corvane::parseArguments({argv + 1, argv + argc}, problem);
    int code = kWrongUsage;
    if (!arguments) {
        err.write("corvane-cli: " + problem + "\n\n" + corvane::usageText());
    } else {
        try {
            code = corvane::answersAlone(*arguments, out) ? 0 : runProgram(*arguments, out, err);
        } catch (const std::exception& error) {
            err.write(std::string("corvane-cli: ") + error.what() + "\n");
            code = kFailed;
        }
    }
    out.finish();
    if (const auto failure = out.failure(); !failure.empty())
        err.write("corvane-cli: standard output is not complete: " + failure + ".\n");
    err.finish();
    return code;
}
