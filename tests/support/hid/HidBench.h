#pragma once

#include "hid/VellIO.h"
#include "models/HidReader.h"
#include "models/PacedLine.h"
#include "ports/clsVellComm.h"
#include "support/FakeRuntime.h"
#include "support/hid/FakeHidBus.h"
#include "support/hid/VellModule.h"

namespace corvane::fakes {

/// A device, not owned, behind a simulated reader.
struct SimulatedReader : ReaderPeer {
    SimulatedReader(FakeRuntime& runtime, models::Peer& device, models::HidReaderOptions options = {})
        : ReaderPeer(reader, [&runtime] { return runtime.micros(); }), line(device), reader(line, std::move(options)) {}

    models::PacedLine line;
    models::HidReader reader;

    void plug(FakeHidBus& bus, const std::string& path) {
        const auto& is = reader.options();
        bus.plug({path, is.vendor, is.product, is.manufacturer, is.name, is.serialNumber}, *this);
    }
};

/// Virtual time and the real control on the real transport library, over the readers of a test.
struct HidControlBench {
    static constexpr char kLibrary[] = "/opt/corvane/VellIO.so";

    FakeRuntime runtime;
    FakeHidBus bus{[this] { return runtime.tick(); }};
    FakeModuleLoader loader;
    Cancel cancel;
    std::unique_ptr<VellIO> control;

    /// The library lacks these operations. One that is not served (vellService) tells of nothing by itself.
    explicit HidControlBench(bool userMode = true, const std::vector<std::string>& without = {}) {
        auto exports = vellModule();
        for (const auto& name : without) exports[name] = nullptr;
        loader.provide(kLibrary, exports);
        start(userMode);
    }

    void start(bool userMode, const VellIO::PropertyBag& properties = {}) {
        control = std::make_unique<VellIO>(runtime, loader, kLibrary, cancel);
        control->ReadProperties(userMode, properties);
    }
};

/// With a HID port object, ready for the device dialogue; the twin of SerialBench.
struct HidBench : HidControlBench {
    clsMSCommEvent event;
    clsVellComm port;

    HidBench() {
        port.Attach(control.get(), &event);
        port.InputMode(1);
    }
    ~HidBench() { port.Attach(nullptr, nullptr); }
};

}  // namespace corvane::fakes
