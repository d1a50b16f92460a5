#pragma once

#include <string>
#include <vector>

#include "platform/Launcher.h"

namespace corvane::fakes {

/// Notes what would have been started and shown. While a failure is set, that is the answer and nothing is noted.
class FakeLauncher : public Launcher {
public:
    std::vector<std::string> started;
    std::vector<std::string> shown;
    std::string failure;

    std::string start(const std::string& path) override { return note(started, path); }
    std::string open(const std::string& address) override { return note(shown, address); }

private:
    std::string note(std::vector<std::string>& list, const std::string& what) const {
        if (failure.empty()) list.push_back(what);
        return failure;
    }
};

}  // namespace corvane::fakes
