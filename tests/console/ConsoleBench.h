#pragma once

#include <deque>
#include <gtest/gtest.h>

#include "console/Console.h"
#include "models/Flash.h"
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
class ConsoleTest : public ::testing::Test {
protected:
    static constexpr char kImage[] =
        "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n:0400000001020304F2\n:0400100005060708D2\n:00000001FF\n";

    models::Device& plug(models::DeviceOptions options = {}, std::int16_t number = 1) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        bench.serial.plug(number, *devices.back());
        return *devices.back();
    }

    std::string image(const std::string& content = kImage) { return bench.folder.folder.file("local.hex", content); }

    int run(const std::vector<std::string>& words) {
        out.text.clear();
        err.text.clear();
        std::string problem;
        const auto arguments = parseArguments(words, problem);
        EXPECT_TRUE(arguments) << problem;
        auto platform = bench.platform();
        Console console{platform, out, err, terminal, ftpPassword, devicePassword, nullptr};
        current = &console;
        const int code = console.run(*arguments);
        current = nullptr;
        return code;
    }

    void interrupt() {
        if (current && current->interrupt) current->interrupt();
    }

    fakes::AppBench bench;
    KeptText out, err;
    ScriptedTerminal terminal;
    std::optional<std::string> ftpPassword, devicePassword;
    std::vector<std::unique_ptr<models::Device>> devices;
    Console* current = nullptr;
};

}  // namespace corvane
