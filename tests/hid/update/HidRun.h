#pragma once

#include <gtest/gtest.h>

#include "app/MainPresenter.h"
#include "models/Flash.h"
#include "support/AppBench.h"
#include "support/hid/HidBench.h"

namespace corvane {

/// The whole workflow in virtual time over the real HID control and the real transport library: a device behind a
/// simulated reader, an image, a run.
class HidRun : public ::testing::Test {
protected:
    static constexpr char kImage[] =
        "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
        ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:00000001FF\n";
    static constexpr char kPath[] = "/dev/hidraw0";

    HidRun() { bench.modules.provide(bench.folder.path() + "/VellIO.so", fakes::vellModule()); }

    ~HidRun() override {
        if (updater) updater->shutDown();
    }

    /// Plugs a device in behind a reader, HID1.
    models::Device& plug(models::DeviceOptions options = {}, const models::HidReaderOptions& reader = {}) {
        device = std::make_unique<models::Device>(std::move(options));
        behind = std::make_unique<fakes::SimulatedReader>(bench.runtime, *device, reader);
        plugIn();
        return *device;
    }

    void plugIn() {
        const auto& options = behind->reader.options();
        bus.plug({kPath, options.vendor, options.product, options.manufacturer, options.name, options.serialNumber},
                 behind->pipe);
    }

    void plugInAgain() {
        bus.unplug(kPath);
        device->plugIn(bench.runtime.micros());
        behind->reader.restart();
        plugIn();
    }

    /// The program is started, with a local image.
    void startProgram() {
        updater.emplace(bench.platform(), bench.face.face());
        presenter.emplace(*updater);
        presenter->load();
        presenter->optLine_Click(true);
        ASSERT_TRUE(presenter->loadFile(bench.folder.folder.file("local.hex", kImage)));
        bench.runtime.setPump([this] {
            if (!lostAt && !device->isPlugged()) lostAt = bench.runtime.ms();
        });
    }

    /// The next run; its log is in the face, and how long it went on without its device in afterLoss.
    RunReport start(bool force = false) {
        if (!updater) startProgram();
        bench.face.log.clear();
        lostAt.reset();
        auto report = presenter->start(force);
        afterLoss = lostAt ? bench.runtime.ms() - *lostAt : 0;
        return report;
    }

    /// Empty when the device's memory is the image's.
    std::string memoryFault() const {
        const auto text = models::comparison(device->flash(), models::imageOf(kImage));
        return text == "memory equals image" ? "" : text;
    }

    fakes::AppBench bench;
    fakes::FakeHidBus bus{[this] { return bench.runtime.tick(); }};
    std::unique_ptr<models::Device> device;
    std::unique_ptr<fakes::SimulatedReader> behind;
    std::optional<Updater> updater;
    std::optional<MainPresenter> presenter;
    std::optional<std::int64_t> lostAt;
    std::int64_t afterLoss = 0;
};

}  // namespace corvane
