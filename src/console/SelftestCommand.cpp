#include <cstdio>

#include "app/LoopbackTest.h"
#include "console/Console.h"
#include "console/TerminalText.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string milliseconds(std::int64_t micros) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(micros) / 1000);
    return text;
}

std::string lineOf(const LoopbackTest::Row& row) {
    auto line = row.settings + "\t" + row.words();
    if (row.outcome == LoopbackTest::Row::Outcome::right)
        line += "\t" + milliseconds(row.took) + " where the line needs " + milliseconds(row.wire) +
                "; a lone byte comes " + milliseconds(row.delay) + " late";
    return line + "\n";
}

std::string jsonOf(const LoopbackTest::Result& result) {
    std::vector<std::string> rows;
    for (const auto& row : result.rows) {
        const std::pair<const char*, std::int64_t> numbers[] = {{"sent", static_cast<std::int64_t>(row.sent)},
                                                                {"received", static_cast<std::int64_t>(row.received)},
                                                                {"tookMicros", row.took},
                                                                {"wireMicros", row.wire},
                                                                {"delayMicros", row.delay}};
        auto object = "{\"settings\":" + jsonString(row.settings) + ",\"outcome\":" + jsonString(row.words());
        for (const auto& [name, number] : numbers) object += "," + jsonString(name) + ":" + std::to_string(number);
        rows.push_back(object + "}");
    }
    const auto flag = [](bool isSo) { return isSo ? "true" : "false"; };
    return "{\"right\":" + std::string(flag(result.isRight())) + ",\"rtsReachesCts\":" + flag(result.rtsReachesCts) +
           ",\"dtrReachesDsr\":" + flag(result.dtrReachesDsr) + ",\"breakComesBack\":" + flag(result.breakComesBack) +
           ",\"rows\":[" + joined(rows, ",") + "]}\n";
}

}  // namespace

int selftestCommand(Console& console, const Arguments& arguments) {
    constexpr int kNotRight = 1, kNoPort = 3;
    CommandScope scope(console, arguments, console.err, false);
    LoopbackTest test(scope.updater.serialPort(), console.platform.runtime);
    if (!arguments.json) test.onRow = [&console](const auto& row) { writeHarmless(console.out, lineOf(row)); };
    const auto result = test.run(*arguments.port);
    if (arguments.json) console.out.write(jsonOf(result));
    if (!result.problem.empty()) {
        const auto reason = result.isRefused ? scope.updater.refusal(*arguments.port) : std::string();
        scope.face.say(reason.empty() ? result.problem + "." : reason);
        return scope.end(kNoPort);
    }
    const auto say = [&scope](bool isSo, const std::string& yes, const std::string& no) {
        scope.face.say(isSo ? yes : no);
    };
    say(result.rtsReachesCts, "RTS reaches CTS.", "RTS does not reach CTS, or is not wired to it.");
    say(result.dtrReachesDsr, "DTR reaches DSR.", "DTR does not reach DSR, or is not wired to it.");
    say(result.breakComesBack, "A break comes back.", "A break does not come back.");
    if (!result.hasComeBack()) scope.face.say("Nothing came back at all: is the output wired to the input?");
    say(result.isRight(), "Every byte came back right at every setting.", "Not everything came back right.");
    return scope.end(result.isRight() ? 0 : kNotRight);
}

}  // namespace corvane
