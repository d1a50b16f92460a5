#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "face/Log.h"
#include "face/PasswordPrompt.h"
#include "face/PortPanel.h"
#include "face/Progress.h"

namespace corvane::fakes {

/// What the device dialogue shows and asks, written down. "\f" in the log stands for a clearing.
class RecordingFace : public Log, public Progress, public PortPanel, public PasswordPrompt {
public:
    std::string log;
    std::vector<std::pair<std::int64_t, std::int64_t>> bar;
    std::vector<std::pair<std::int64_t, std::int64_t>> transfers;
    std::vector<std::string> panel;   ///< "show a,b", "off 1", "on 1", "hide", "refused COM1"
    std::deque<std::string> answers;  ///< to the questions for a password; empty texts when there are no more
    std::vector<std::string> questions;
    std::function<void(const std::string&)> onText;  ///< after each logged text

    void ShowInfo(std::string_view text) override {
        log += text;
        if (onText) onText(std::string(text));
    }
    void clear() override { log += "\f"; }
    void progress(std::int64_t value, std::int64_t maximum) override { bar.emplace_back(value, maximum); }
    void transferred(std::int64_t bytes, std::int64_t total) override { transfers.emplace_back(bytes, total); }

    void showPorts(const std::vector<std::string>& names) override {
        std::string shown = "show ";
        for (const auto& name : names) shown += name + ",";
        panel.push_back(shown);
    }
    void enablePort(int index, bool enabled) override {
        panel.push_back((enabled ? "on " : "off ") + std::to_string(index));
    }
    void hidePorts() override { panel.emplace_back("hide"); }
    void trying(const std::string&, const std::string&) override {}
    void portRefused(const std::string& port) override { panel.push_back("refused " + port); }

    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override {
        questions.push_back(title + "|" + prompt + "|" + byDefault);
        if (answers.empty()) return {};
        auto answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

}  // namespace corvane::fakes
