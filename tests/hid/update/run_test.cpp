#include <algorithm>
#include <gtest/gtest.h>

#include "models/Flash.h"
#include "support/Program.h"
#include "support/hid/HidBench.h"

namespace corvane {
namespace {

constexpr char kPath[] = "/dev/hidraw0";

/// A device behind a simulated reader, HID1, over the real transport library.
struct HidSide {
    HidSide(const models::DeviceOptions& options, const models::HidReaderOptions& reader)
        : device(options), behind(bench.runtime, device, reader) {
        bench.modules.provide(bench.folder.path() + "/VellIO.so", fakes::vellModule());
        behind.plug(bus, kPath);
    }

    fakes::AppBench bench;
    fakes::FakeHidBus bus{[this] { return bench.runtime.tick(); }};
    models::Device device;
    fakes::SimulatedReader behind;
};

/// The whole workflow over the real HID control and such a reader, with a local image.
struct HidRun : HidSide, fakes::Program {
    explicit HidRun(const models::DeviceOptions& options = {}, const models::HidReaderOptions& reader = {})
        : HidSide(options, reader), Program(HidSide::bench) {
        EXPECT_TRUE(loadImage());
    }

    /// The exit status of the next run.
    int start(bool force = false) {
        outcome = Program::start(force);
        EXPECT_EQ(bus.openDevices(), 0);
        return exitStatus(outcome);
    }

    bool isUpdated() const {
        return models::comparison(device.flash(), models::imageOf(fakes::kImage)) == "memory equals image";
    }

    using HidSide::bench;
    Outcome outcome;
};

TEST(HidUpdate, TellsADeviceThatTookAPasswordThatTheSessionEnds) {
    const struct {
        const char *password, *fault;
        std::vector<int> functions;
    } cases[] = {
        {"quill", "deaf@04", {0x01, 0x1F, 0x00, 0x03, 0x1F, 0x04}},
        {"quill", nullptr, {0x01, 0x1F, 0x00, 0x03, 0x1F, 0x04}},
        {"", nullptr, {0x01, 0x1F}},
    };
    for (const auto& one : cases) {
        models::DeviceOptions options;
        if (*one.password) options.password = one.password;
        if (one.fault) options.faults = {one.fault};
        HidRun run(options);
        EXPECT_EQ(run.start(), 0);
        std::vector<int> functions;
        for (const auto& request : run.device.log().requests) functions.push_back(request.function);
        EXPECT_EQ(functions, one.functions);
        EXPECT_EQ(run.behind.reader.commands().back(), Bytes({3, 1, 3})) << "the reader is told after the device";
        EXPECT_EQ(run.bench.runtime.ms() > 5000, one.fault != nullptr) << "3 s for a device that does not answer";
    }
}

TEST(HidUpdate, SendsNoCommandsToAReaderThatTakesNone) {
    models::HidReaderOptions reader;
    reader.name = "Kestrel (hid1)";
    HidRun run({}, reader);
    EXPECT_EQ(run.start(), 0);
    EXPECT_TRUE(run.isUpdated());
    EXPECT_TRUE(run.behind.reader.commands().empty());
    EXPECT_NE(run.bench.face.log.find("Comm Port : HID1 (F/W:)\r\n"), std::string::npos);
}

TEST(HidUpdate, ScansReadersBehindSerialPorts) {
    models::DeviceOptions boot;
    boot.kind = models::Kind::boot;
    models::Device serial(boot);
    models::HidReaderOptions reader;
    reader.direction = 5;
    HidRun run({}, reader);
    run.bench.serial.plug(3, serial);
    EXPECT_EQ(run.start(), 0);
    EXPECT_EQ(run.bench.face.panel.front(), "show ,COM3,HID1,");
    EXPECT_TRUE(run.isUpdated());
    EXPECT_EQ(serial.log().erases, 0);
    EXPECT_EQ(run.outcome.facts.port, "HID1 (F/W:KESTREL V2.4)");
    const Bytes rate{1, 4, 0, 0, 0x4B, 0};  // 19200 at opening, and as the scan's first setting
    EXPECT_EQ(run.behind.reader.commands(), std::vector<Bytes>({{203, 0}, rate, {5, 0}, rate, {4, 0}, {3, 1, 5}}));
}

/// A reader that answers no command is asked three times for a setting, and once more at closing.
TEST(HidUpdate, CancelDoesNotWaitForAReaderThatAnswersNoCommand) {
    models::HidReaderOptions reader;
    reader.mutes = {1, 3, 5};
    HidRun run({}, reader);
    std::optional<std::int64_t> cancelledAt;
    run.bench.runtime.setPump([&] {
        const auto& commands = run.behind.reader.commands();
        if (cancelledAt ||
            std::count_if(commands.begin(), commands.end(), [](const Bytes& sent) { return sent[0] == 1; }) < 2)
            return;
        cancelledAt = run.bench.runtime.ms();
        run.presenter.cmdCancel_Click();
    });
    EXPECT_EQ(run.start(), 1);
    EXPECT_LT(run.bench.runtime.ms() - cancelledAt.value(), 1300);
}

TEST(HidUpdate, WithAReaderUnpluggedEndsSoonAndWorksAgainWhenItIsBack) {
    const std::string noPort = "No port could be opened.", noDevice = "No device answered on any port.";
    const struct {
        const char* fault;
        std::uint8_t muted;  // or it is unplugged while this command, which is never answered, is waited for
        std::string logged;
        int status;
    } cases[] = {
        {"unplug-byte@1", 0, "   Scan by 9600,N,8,1, No Device!!\r\nCan not found any device on comm port!!\r\n", 3},
        {"unplug-request@1f", 0, "(TarnPlus Protocol)... < NG\r\nCan't enter ISP Mode!!\r\n", 5},
        {"cut@3", 0, "(TarnPlus Protocol)... < OK\r\nCan't enter ISP Mode!!\r\n", 5},  // for the boot loader's prompt
        {"unplug-erase", 0, "iTry:2\r\nErase Firmware... < NG\r\n\r\niTry:3\r\n", 5},
        {"unplug@:00000001FF", 0, "iTry:2\r\nProgramming... < NG\r\n\r\niTry:3\r\n", 5},
        {"", 203, "\f\fOpen HID1 ... < NG\r\nCan not found any device on comm port!!\r\n", 3},
        {"", 4, "(TarnPlus Protocol)... < NG\r\nCan't enter ISP Mode!!\r\n", 5},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.fault + std::to_string(one.muted));
        models::DeviceOptions options;
        if (*one.fault) options.faults.add(one.fault);
        models::HidReaderOptions reader;
        if (one.muted) reader.mutes = {one.muted};
        HidRun run(options, reader);
        std::optional<std::int64_t> lostAt;
        run.bench.runtime.setPump([&] {
            const auto& commands = run.behind.reader.commands();
            const bool asked = one.muted && !commands.empty() && commands.back()[0] == one.muted;
            if (lostAt || !(asked || !run.device.isPlugged())) return;
            lostAt = run.bench.runtime.ms();
            run.bus.unplug(kPath);
        });
        EXPECT_EQ(run.start(), one.status);
        EXPECT_TRUE(run.bench.face.log.ends_with(one.logged)) << run.bench.face.log;
        EXPECT_LT(run.bench.runtime.ms() - lostAt.value(), 3000);
        const auto cause = run.updater.conclude(run.outcome).facts[0];
        const std::string name = one.muted == 4 ? "HID1 (F/W:)" : "HID1 (F/W:KESTREL V2.4)";
        EXPECT_EQ(cause, one.muted == 203  ? noPort
                         : one.status == 3 ? noDevice
                                           : name + " was lost: it was unplugged, or its cable came loose.");
        run.bus.unplug(kPath);
        run.device.plugIn(run.bench.runtime.micros());
        run.behind.reader.restart();
        run.behind.reader.options().mutes.clear();
        run.behind.plug(run.bus, kPath);
        EXPECT_EQ(run.start(true), 0) << run.bench.face.log;
        EXPECT_TRUE(run.isUpdated());
    }
}

}  // namespace
}  // namespace corvane
