#include "faults/explore/Attempt.h"

#include "app/Updater.h"
#include "models/HidReader.h"
#include "run/EndTable.h"
#include "support/AppBench.h"
#include "support/hid/FakeHidBus.h"
#include "support/hid/VellModule.h"

namespace corvane::faults {
namespace {

constexpr int kStretch = 10;            // ms
constexpr Micros kSettles = 3'000'000;  // what is still under way when a run ends
constexpr char kLibrary[] = "VellIO.so";

/// The program's folder, for all runs: making one takes longer than a run.
fakes::FakeProgramFolder& sharedFolder() {
    static fakes::FakeProgramFolder folder;
    return folder;
}

/// A serial control at a wire. A blind one never reports unsent bytes, as pseudo-terminals and most adapters do. It
/// moves whole sendings where the fake control of the other tests moves bytes, which makes a run ten times as fast.
class WirePort : public fakes::FakeSerialControl {
public:
    WirePort(fakes::FakeRuntime& clock, Wire& wire, bool isBlind)
        : FakeSerialControl(clock), clock_(clock), wire_(wire), isBlind_(isBlind) {
        plug(1, wire);
    }

private:
    void send(const Bytes& bytes) override { wire_.hear(clock_.micros(), bytes, line().baudRate); }
    std::int32_t unsent() override { return isBlind_ ? 0 : wire_.unsent(clock_.micros()); }

    fakes::FakeRuntime& clock_;
    Wire& wire_;
    bool isBlind_;
};

/// The platform of one run.
struct World {
    World(PortKind kind, const Wire::Plan& plan)
        : wire(plan),
          serial(runtime, wire, kind == PortKind::blind),
          reader(wire, {}),
          readerPeer(reader, [this] { return runtime.micros(); }) {
        runtime.stretchWaits(kStretch);
        if (kind == PortKind::hid) {
            const auto& is = reader.options();
            bus.plug({"HID1", is.vendor, is.product, is.manufacturer, is.name, is.serialNumber}, readerPeer);
            modules.provide(kLibrary, fakes::vellModule());
        } else {
            map.entries.push_back({"ttyS1", "COM1"});
        }
    }

    Platform platform() {
        return {runtime,  serial, map,       modules,   site,  settings,  sharedFolder(),
                launcher, digest, inspector, inhibitor, files, processes, kLibrary};
    }

    fakes::FakeRuntime runtime;
    Wire wire;
    WirePort serial;
    models::HidReader reader;
    fakes::ReaderPeer readerPeer;
    fakes::FakeHidBus bus{[this] { return runtime.tick(); }};
    fakes::FakePortMap map;
    fakes::FakeModuleLoader modules;
    fakes::FakeAsyncReader site{runtime};
    fakes::FakeSettingsStore settings;
    fakes::FakeLauncher launcher;
    fakes::FakeDigest digest;
    fakes::FakePortInspector inspector;
    fakes::FakeInhibitor inhibitor;
    fakes::FakeFileStore files;
    fakes::FakeProcesses processes;
    fakes::RecordingOperator face;
};

/// All that is asked of the program: what it exits with after a run that begins with no memory of others.
int statusOf(World& world, const TestImage& image) {
    Updater updater(world.platform(), world.face.face());
    updater.choices.offLine = updater.choices.useFile = true;
    updater.choices.image = image.value();
    if (!updater.journal().forget(updater.journal().left()).empty()) return -1;
    const int status = exitStatus(updater.run().run(false));
    updater.shutDown();
    return status;
}

}  // namespace

TestImage::TestImage(const std::string& records) : memory_(models::imageOf(records)) {
    fakes::FakeDigest digest;
    image_ = Image("image.hex", "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n" + records, digest);
}

Outcome attempt(PortKind kind, const TestImage& image, const Wire::Plan& plan) {
    World world(kind, plan);
    Outcome outcome;
    outcome.status = statusOf(world, image);
    outcome.conversation = world.wire.conversation();
    world.wire.speak(world.runtime.micros() + kSettles);
    outcome.isRight = !models::firstDifference(world.wire.device().flash(), image.memory());
    outcome.isRunning = !world.wire.device().isInBoot();
    outcome.steps = world.wire.steps();
    outcome.struck = world.wire.struck();
    outcome.log = world.face.log;
    return outcome;
}

}  // namespace corvane::faults
