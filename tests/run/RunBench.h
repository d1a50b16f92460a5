#pragma once

#include <gtest/gtest.h>

#include "support/Program.h"
#include "support/hid/HidBench.h"

namespace corvane {

using fakes::kImage;

/// With the transport library for HID readers.
struct ReaderBench : fakes::AppBench {
    ReaderBench() { modules.provide(folder.path() + "/VellIO.so", fakes::vellModule()); }

    fakes::FakeHidBus bus{[this] { return runtime.tick(); }};
};

/// A run in virtual time: a device, an image, the whole workflow.
struct RunTest : ::testing::Test, protected ReaderBench, protected fakes::Program {
    RunTest() : fakes::Program(static_cast<fakes::AppBench&>(*this)) {}

    /// The only device that there is, with these faults.
    models::Device& plugOnly(const models::Faults& faults, models::DeviceOptions options = {}) {
        unplugReader();
        behind.reset();
        devices.clear();
        serial.map.entries.clear();
        updater.session().rememberedPort.clear();
        options.faults = faults;
        return plug(std::move(options));
    }

    /// The same behind a HID reader, HID1.
    void plugBehindReader(const models::Faults& faults, models::DeviceOptions options = {},
                          models::HidReaderOptions reader = {}) {
        auto& device = plugOnly(faults, std::move(options));
        serial.map.entries.clear();
        behind.emplace(runtime, device, std::move(reader));
        behind->plug(bus, "/dev/hidraw0");
    }
    void unplugReader() { bus.unplug("/dev/hidraw0"); }

    /// Calls the handler when this text is logged.
    void when(const std::string& logged, const std::function<void()>& handler) {
        face.onText = [=](const std::string& text) {
            if (text == logged) handler();
        };
    }

    models::Device& device() { return *devices.front(); }
    std::string& log() { return face.log; }
    std::string stored(const std::string& name) const { return fakes::ScratchFolder::content(folder.folder.at(name)); }

    std::optional<fakes::SimulatedReader> behind;
};

inline const std::string kFound =
    "\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\nDevice F/W: TARN-R200 "
    "V5.1R23\r\n\r\n";
inline const std::string kOffer =
    "[FTP Site]\r\nProduct   : TARN-R200\r\nVersion   : V5.2R1\r\n\r\n[Update Information]\r\n";
inline const std::string kToIsp = "GoTo ISP Mode (TarnPlus Protocol)... < OK\r\n\r\n[ISP Mode]\r\n";
inline const std::string kErased = "Erase Firmware... < OK\r\n";
inline const std::string kDone = "Programming... < OK\r\nUpdate Finish\r\n";

}  // namespace corvane
