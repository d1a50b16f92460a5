#pragma once

#include <string>
#include <vector>

#include "platform/Launcher.h"

namespace corvane::fakes {

/// Notes what would have been started and shown. While a failure is set, that is the answer and nothing is noted.
class FakeLauncher : public Launcher {
public:
    std::vector<std::string> started;  ///< a path, and behind it each variable that it was given, " NAME=value"
    std::vector<std::string> shown;
    std::string failure;

    std::string start(const std::string& path, const std::vector<Variable>& variables) override {
        std::string text = path;
        for (const auto& [name, value] : variables) text.append(" ").append(name).append("=").append(value);
        return note(started, text);
    }
    std::string open(const std::string& address) override { return note(shown, address); }

private:
    std::string note(std::vector<std::string>& list, const std::string& what) const {
        if (failure.empty()) list.push_back(what);
        return failure;
    }
};

}  // namespace corvane::fakes
