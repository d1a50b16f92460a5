#pragma once

#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hid/VellIO.h"
#include "support/FakeModuleLoader.h"
#include "support/FakeRuntime.h"

namespace corvane {

/// A HID library that does what the test has written down, under the virtual clock, and records what it was asked. The
/// control reaches it as a module. Its C functions find the one that was made last.
class FakeVell {
public:
    static constexpr char kPath[] = "/opt/corvane/VellIO.so";

    /// Pieces of a reply on the control channel, each so many ms after the command.
    using Pieces = std::vector<std::pair<int, Bytes>>;

    FakeVell(fakes::FakeRuntime& runtime, fakes::FakeModuleLoader& loader);
    ~FakeVell();

    /// The file as it is found, without these operations.
    void provide(const std::vector<std::string>& without = {});

    /// Replies to the commands to come, in this order; a command without one is met with silence.
    void reply(const Bytes& bytes) { replies_.push_back({{0, bytes}}); }
    void reply(Pieces pieces) { replies_.push_back(std::move(pieces)); }

    /// Calls back at once, as the library does from inside vellDispatch.
    std::int32_t raise(std::int32_t code, std::int32_t parameter = 0, const std::string& text = {});

    /// "12 01 04 00 00 4B 00": when it was sent (ms) and the bytes of each command.
    std::vector<std::string> commands;
    /// What else was asked, where order matters: "create 1209 5", "open HID1", "break 0", "close", "destroy"...
    std::vector<std::string> calls;

    bool createWorks = true;
    bool openWorks = true;
    bool isOpen = false;
    bool ctrlWorks = true;
    bool tellsControlData = true;  // event 4 for each piece
    std::string prefix = "HID";
    std::string product = "Kestrel";
    std::int32_t productId = 5;
    std::vector<std::pair<std::string, std::string>> devices{{"HID1", "HID1 Kestrel"}};
    Bytes toRead;
    Bytes written;
    std::int32_t readSize = 4096;
    std::int32_t writeSize = 4096;

private:
    friend struct FakeVellCalls;

    void sendPieces(const Bytes& frame);
    void arrive();

    fakes::FakeRuntime& runtime_;
    fakes::FakeModuleLoader& loader_;
    FakeVell* before_;
    VellCallBack proc_ = nullptr;
    std::intptr_t user_ = 0;
    std::deque<Pieces> replies_;
    std::multimap<fakes::Micros, Bytes> coming_;
    Bytes control_;
    std::string param_;
    std::string lent_;
    int notices_ = 0;  // pieces that dispatch has not told yet
};

/// The control on that library at run time.
struct ControlBench {
    fakes::FakeRuntime runtime;
    fakes::FakeModuleLoader loader;
    FakeVell vell{runtime, loader};
    std::unique_ptr<VellIO> control;
    std::vector<std::string> boxes;  // message boxes that were shown

    explicit ControlBench(bool userMode = true, const std::vector<std::string>& without = {}) {
        vell.provide(without);
        start(userMode);
    }

    void start(bool userMode, const VellIO::PropertyBag& properties = {}) {
        control = std::make_unique<VellIO>(runtime, loader, FakeVell::kPath);
        control->showCritical = [this](const std::string& message) { boxes.push_back(message); };
        control->ReadProperties(userMode, properties);
    }

    /// Opens HID1 with a reader that accepts everything and has the given direction; forgets what was sent.
    void open(std::uint8_t direction = 7) {
        vell.reply({6, 0});
        vell.reply({6, 0});
        vell.reply({6, 1, direction});
        control->CommPort("HID1");
        control->PortOpen(true);
        EXPECT_TRUE(control->PortOpen());
        vell.commands.clear();
        vell.calls.clear();
    }
};

}  // namespace corvane
