#pragma once

#include <optional>
#include <string>
#include <vector>

#include "models/HidReader.h"
#include "support/ScratchFolder.h"

struct _UMockdevTestbed;

namespace corvane::fakes {

/// A hidraw device that this process and its children see (run it under umockdev-wrapper). The reader's end of it is a
/// byte stream of whole reports.
class MockedHidraw {
public:
    explicit MockedHidraw(const models::HidReaderOptions& options);
    ~MockedHidraw();
    MockedHidraw(const MockedHidraw&) = delete;
    MockedHidraw& operator=(const MockedHidraw&) = delete;

    /// Both make the system tell its listeners. Throws std::runtime_error when the test bed refuses.
    void plug();
    void unplug();
    bool isPlugged() const { return descriptor_ >= 0; }

    /// The reader's end; -1 while it is unplugged.
    int descriptor() const { return descriptor_; }

    /// The next whole output report; nothing while there is none.
    std::optional<HidReport> receive();
    void send(const HidReport& report);

private:
    std::string name() const { return "hidraw" + std::to_string(plugged_); }
    std::string node() const { return "/dev/" + name(); }

    models::HidReaderOptions options_;
    _UMockdevTestbed* bed_;
    ScratchFolder folder_;
    int plugged_ = 0;  // times
    int descriptor_ = -1;
    std::string pending_;
    std::vector<int> kept_;  // a terminal of each node
};

}  // namespace corvane::fakes
