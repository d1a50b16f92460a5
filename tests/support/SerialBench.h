#pragma once

#include "models/Device.h"
#include "ports/clsMSComm.h"
#include "support/FakePortMap.h"
#include "support/FakeRuntime.h"
#include "support/FakeSerialControl.h"

namespace corvane::fakes {

/// Virtual time and a serial port object on a fake control, ready for the device dialogue.
struct SerialBench {
    FakeRuntime runtime;
    FakePortMap map;
    FakeSerialControl control{runtime};
    clsMSCommEvent event;
    clsMSComm port{map};

    SerialBench() {
        port.Attach(&control, &event);
        port.InputMode(1);
    }

    /// A device, not owned, at COM<number>, which is listed then.
    void plug(std::int16_t number, models::Peer& peer) {
        control.plug(number, peer);
        list(number);
    }

    void list(std::int16_t number) {
        map.entries.push_back({"ttyS" + std::to_string(number), "COM" + std::to_string(number)});
    }

    /// Plugs the device in at COM1 and opens the port.
    void open(models::Peer& peer, const std::string& settings = "19200,N,8,1") {
        plug(1, peer);
        port.CommPort("COM1");
        port.Settings(settings);
        port.PortOpen(true);
    }
};

}  // namespace corvane::fakes
