#pragma once

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>

#include "console/Console.h"
#include "support/AppBench.h"

namespace corvane {

/// A stream that keeps what was written.
class KeptText : public TextSink {
public:
    std::string text;
    bool terminal = false;
    std::function<void()> onWrite;

    void write(std::string_view utf8) override {
        text += utf8;
        if (onWrite) onWrite();
    }
    bool isTerminal() const override { return terminal; }
};

/// A terminal that types what the test says; at the end of that, the end of the input.
class ScriptedTerminal : public Terminal {
public:
    bool there = false;
    std::deque<std::string> lines;
    std::vector<bool> echoes;
    std::function<void()> onRead;

    bool isThere() const override { return there; }
    std::optional<std::string> readLine(bool echo, const std::function<bool()>& isAbandoned) override {
        echoes.push_back(echo);
        if (onRead) onRead();
        if (lines.empty() || isAbandoned()) return std::nullopt;
        auto line = lines.front();
        lines.pop_front();
        return line;
    }
};

/// corvane-cli in process: its commands over fakes, its streams kept.
class ConsoleTest : public ::testing::Test, public fakes::AppBench {
public:
    std::string image(const std::string& content = fakes::kImage) { return folder.folder.file("local.hex", content); }

    int run(std::vector<std::string> words) {
        const bool asks = asksAfterwards() || std::count(words.begin(), words.end(), "--verify") > 0;
        if (words.front() == "update" && !asks) words.emplace_back("--no-verify");
        out.text.clear();
        err.text.clear();
        std::string problem;
        const auto arguments = parseArguments(words, problem);
        EXPECT_TRUE(arguments) << problem;
        auto everything = platform();
        Console console{everything, out, err, terminal, ftpPassword, devicePassword, nullptr};
        current = &console;
        const int code = console.run(*arguments);
        current = nullptr;
        return code;
    }

    /// An update with the local image.
    int update(std::vector<std::string> more = {"--yes"}) {
        more.insert(more.begin(), {"update", "--file", image()});
        return run(more);
    }

    bool says(const std::string& words) const { return err.text.find(words) != std::string::npos; }
    bool prints(const std::string& words) const { return out.text.find(words) != std::string::npos; }

    /// Calls a handler once the log ends with a text, from within the run.
    void when(const std::string& logged, const std::function<void()>& handler) {
        out.onWrite = [this, logged, handler] {
            if (out.text.ends_with(logged)) handler();
        };
    }

    void interrupt() {
        if (current && current->interrupt) current->interrupt();
    }

    KeptText out, err;
    ScriptedTerminal terminal;
    std::optional<std::string> ftpPassword, devicePassword;
    Console* current = nullptr;
};

}  // namespace corvane
