#pragma once

#include <functional>
#include <string>

#include "platform/linux/serial/TermiosSerialControl.h"
#include "support/FakePortMap.h"
#include "support/FakeSerialControl.h"
#include "support/PseudoTerminal.h"
#include "support/ScriptedPeer.h"

namespace corvane {

/// Waits, without events, until the condition holds; False when it does not within 500 waits.
inline bool waitUntil(Runtime& runtime, const std::function<bool()>& condition) {
    for (int waits = 0; waits < 500 && !condition(); ++waits) runtime.WaitActivity(10);
    return condition();
}

/// A serial control with a device at COM1 that the test plays, and no COM2. This one in virtual time.
struct FakeSerialRig {
    FakeSerialRig() { control.plug(1, peer); }

    fakes::FakeRuntime runtime;
    fakes::FakeSerialControl control{runtime};
    fakes::ScriptedPeer peer;
    std::size_t given = 0;

    void say(const std::string& bytes) { peer.say(runtime.ms(), bytes); }
    std::string heard() {
        const auto news = peer.heardText().substr(given);
        given += news.size();
        return news;
    }
    void unplug() { peer.unplugAt(runtime.ms()); }
    void occupy() { control.markBusy(1); }
};

/// The real control at a pseudo-terminal.
struct PseudoTerminalRig {
    PseudoTerminalRig() {
        map.entries = {{line.path().substr(5), "COM1"}};
        line.makeRaw();
    }

    LinuxRuntime runtime;
    fakes::PseudoTerminal line;
    fakes::FakePortMap map;
    TermiosSerialControl control{runtime, map};
    TermiosSerialControl other{runtime, map};

    void say(const std::string& bytes) const { line.say(bytes); }
    std::string heard() const { return line.heard(); }
    void unplug() { line.unplug(); }
    void occupy() { other.PortOpen(true); }
};

/// What every serial control does, the real one and the one of the tests.
template <typename Rig>
class SerialControlContract : public testing::Test {
protected:
    Rig side;

    /// The number of the error that a call throws; 0 when it throws none.
    static int errorOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const PortError& error) {
            return error.number();
        }
        return 0;
    }

    /// Says it and waits until so many bytes are in the buffer.
    void received(const std::string& bytes, std::size_t count) {
        side.say(bytes);
        const auto isThere = [&] { return side.control.InBufferCount() == static_cast<std::int32_t>(count); };
        ASSERT_TRUE(waitUntil(side.runtime, isThere));
    }
    void received(const std::string& bytes) { received(bytes, bytes.size()); }

    /// All that the far side hears within the time in which this text should come.
    std::string heard(std::size_t size) {
        std::string text;
        EXPECT_TRUE(waitUntil(side.runtime, [&] { return (text += side.heard()).size() >= size; }));
        return text;
    }

    /// The codes of the events that are due now.
    std::vector<std::int32_t> events() {
        std::vector<std::int32_t> codes;
        side.control.OnComm = [&] { codes.push_back(side.control.CommEvent()); };
        side.runtime.DoEvents();
        side.control.OnComm = nullptr;
        return codes;
    }

    CommState line() {
        CommState state;
        EXPECT_TRUE(side.control.GetCommState(side.control.CommID(), state));
        return state;
    }
};

}  // namespace corvane
