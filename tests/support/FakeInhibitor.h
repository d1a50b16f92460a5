#pragma once

#include <string>
#include <vector>

#include "platform/SleepInhibitor.h"

namespace corvane::fakes {

/// Notes what keeps the computer awake.
class FakeInhibitor : public SleepInhibitor {
public:
    std::vector<std::string> reasons;
    bool isHeld = false;

    void hold(const std::string& reason) override {
        reasons.push_back(reason);
        isHeld = true;
    }
    void release() override { isHeld = false; }
};

}  // namespace corvane::fakes
