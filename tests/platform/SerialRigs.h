#pragma once

#include <functional>
#include <string>

#include "platform/linux/TermiosSerialControl.h"
#include "support/FakePortMap.h"
#include "support/FakeSerialControl.h"
#include "support/PseudoTerminal.h"
#include "support/ScriptedPeer.h"

namespace corvane {

/// A serial control with a device at COM1 that the test plays, and no COM2. This one in virtual time.
class FakeSerialRig {
public:
    FakeSerialRig() { control.plug(1, peer_); }

    fakes::FakeRuntime runtime;
    fakes::FakeSerialControl control{runtime};

    void say(const std::string& bytes) { peer_.say(runtime.ms(), bytes); }
    std::string heard() {
        const auto all = peer_.heardText();
        const auto news = all.substr(given_);
        given_ = all.size();
        return news;
    }
    void unplug() { peer_.unplugAt(runtime.ms()); }
    void occupy() { control.markBusy(1); }

private:
    fakes::ScriptedPeer peer_;
    std::size_t given_ = 0;
};

/// The real control at a pseudo-terminal.
class PseudoTerminalRig {
public:
    PseudoTerminalRig() {
        map.entries = {{line.path().substr(5), "COM1"}};
        line.makeRaw();
    }
    ~PseudoTerminalRig();

    LinuxRuntime runtime;
    fakes::PseudoTerminal line;
    fakes::FakePortMap map;
    TermiosSerialControl control{runtime, map};

    void say(const std::string& bytes) const { line.say(bytes); }
    std::string heard() const { return line.heard(); }
    void unplug() { line.unplug(); }
    void occupy();

private:
    int occupant_ = -1;
};

/// Waits, without events, until the condition holds; False when it does not within 500 waits.
bool waitUntil(Runtime& runtime, const std::function<bool()>& condition);

}  // namespace corvane
