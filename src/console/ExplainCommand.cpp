#include "console/Console.h"
#include "console/TerminalText.h"
#include "report/Explanation.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

int explainCommand(Console& console, const Arguments& arguments) {
    constexpr int kUnreadable = 4;
    const auto refuse = [&](const std::string& why) {
        console.err.write(arguments.subject + " " + why + ".\n");
        return kUnreadable;
    };
    std::string bytes, why;
    try {
        bytes = readFile(arguments.subject);
    } catch (const RuntimeError&) {
        return refuse("cannot be read");
    }
    const auto report = RunReport::read(bytes, why);
    if (!report) return refuse(why);
    if (arguments.json) {
        console.out.write(jsonOf(*report));
        return 0;
    }
    const auto lines = arguments.bytes ? bytesOf(*report) : arguments.timing ? timingOf(*report) : accountOf(*report);
    for (const auto& line : lines) writeHarmless(console.out, line + "\n");
    return 0;
}

}  // namespace corvane
