#pragma once

#include <map>

#include "platform/PortMap.h"

namespace corvane::fakes {

/// Ports as a test says: what is listed, in that order, and where each number lies. As long as isReadable is False the
/// list cannot be read.
class FakePortMap : public PortMap {
public:
    std::vector<PortMapEntry> entries;
    bool isReadable = true;
    std::vector<std::string> faults;
    int listings = 0;

    std::optional<std::vector<PortMapEntry>> list() override {
        ++listings;
        known_.reset();
        if (!isReadable) return std::nullopt;
        known_ = entries;
        return entries;
    }

    std::optional<std::string> devicePath(int number) override {
        if (!known_) list();
        for (const auto& entry : known_.value_or(std::vector<PortMapEntry>())) {
            if (entry.port == "COM" + std::to_string(number)) return "/dev/" + entry.device;
        }
        return std::nullopt;
    }

    std::vector<std::string> problems() override { return faults; }

private:
    std::optional<std::vector<PortMapEntry>> known_;  // as last listed
};

}  // namespace corvane::fakes
