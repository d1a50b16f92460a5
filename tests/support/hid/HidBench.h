#pragma once

#include "hid/VellIO.h"
#include "models/HidReader.h"
#include "models/PacedLine.h"
#include "ports/clsVellComm.h"
#include "support/FakeRuntime.h"
#include "support/hid/FakeHidBus.h"
#include "support/hid/VellModule.h"

namespace corvane::fakes {

/// A device behind a simulated reader.
struct SimulatedReader {
    SimulatedReader(FakeRuntime& runtime, models::Peer& device, models::HidReaderOptions options = {})
        : line(device), reader(line, std::move(options)), pipe(reader, [&runtime] { return runtime.micros(); }) {}

    models::PacedLine line;
    models::HidReader reader;
    ReaderPeer pipe;
};

/// Virtual time and a HID port object on the real control and the real transport library, with simulated readers in
/// place of the system's devices; the twin of SerialBench.
struct HidBench {
    FakeRuntime runtime;
    FakeHidBus bus{[this] { return runtime.tick(); }};
    FakeModuleLoader loader;
    std::unique_ptr<VellIO> control;
    clsMSCommEvent event;
    clsVellComm port;
    std::vector<std::unique_ptr<SimulatedReader>> readers;

    static constexpr char kLibrary[] = "/opt/corvane/VellIO.so";

    HidBench() {
        loader.provide(kLibrary, vellModule());
        control = std::make_unique<VellIO>(runtime, loader, kLibrary);
        control->ReadProperties(true, {});
        port.Attach(control.get(), &event);
        port.InputMode(1);
    }

    ~HidBench() { port.Attach(nullptr, nullptr); }

    /// A device, not owned, behind a reader of its own: HID1 for the first one.
    SimulatedReader& plug(models::Peer& device, const models::HidReaderOptions& options = {}) {
        readers.push_back(std::make_unique<SimulatedReader>(runtime, device, options));
        plugAgain(readers.size());
        return *readers.back();
    }

    static std::string path(std::size_t number) { return "/dev/hidraw" + std::to_string(number); }

    void plugAgain(std::size_t number) {
        auto& plugged = *readers[number - 1];
        plugged.reader.restart();
        const auto& options = plugged.reader.options();
        bus.plug(
            {path(number), options.vendor, options.product, options.manufacturer, options.name, options.serialNumber},
            plugged.pipe);
    }

    void unplug(std::size_t number) { bus.unplug(path(number)); }

    /// Plugs the device in at HID1, in place of whatever there was, and opens the port.
    void open(models::Peer& device, const std::string& settings = "19200,N,8,1") {
        for (std::size_t number = 1; number <= readers.size(); ++number) unplug(number);
        port.NumberOfCommPorts();  // the library lets go of them
        readers.clear();
        plug(device);
        port.NumberOfCommPorts();
        port.CommPort("HID1");
        port.Settings(settings);
        port.PortOpen(true);
    }
};

}  // namespace corvane::fakes
