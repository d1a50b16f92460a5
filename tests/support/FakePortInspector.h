#pragma once

#include <map>
#include <set>

#include "platform/PortInspector.h"

namespace corvane::fakes {

/// Nodes as a test says.
class FakePortInspector : public PortInspector {
public:
    std::map<std::string, PortHolder> holders;
    std::set<std::string> probed;

    std::string userName() override { return "olive"; }
    std::string groupOf(const std::string&) override { return "dialout"; }
    std::optional<PortHolder> holderOf(const std::string& node) override {
        const auto found = holders.find(node);
        return found == holders.end() ? std::nullopt : std::optional(found->second);
    }
    bool isProbedForModems(const std::string& node) override { return probed.count(node) > 0; }
};

}  // namespace corvane::fakes
