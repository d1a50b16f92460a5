#include "RunBench.h"
#include "app/PortAdvisor.h"
#include "window/presenter/ProgressMeter.h"

namespace corvane {
namespace {

class VerdictOfARun : public RunTest {
protected:
    Verdict judge(const std::string& fault, bool force = false, bool prove = false) {
        devices.clear();
        bench.serial.map.entries.clear();
        models::DeviceOptions options;
        options.nextVersion = "TARN-R200 V5.2R1";
        if (!fault.empty()) options.faults.add(fault);
        plug(options);
        loadImage();
        updater.session().rememberedPort.clear();
        return updater.conclude(start(force), prove);
    }

    static bool says(const Verdict& verdict, const std::string& words) {
        for (const auto& line : verdictLines(verdict)) {
            if (line.find(words) != std::string::npos) return true;
        }
        return false;
    }
};

TEST_F(VerdictOfARun, IsUpdatedWithItsProof) {
    auto verdict = judge("nak@:0400100005060708D2", false, true);
    EXPECT_EQ(verdict.kind, Verdict::Kind::updated);
    EXPECT_TRUE(verdict.isSafeToUnplug);
    EXPECT_TRUE(says(verdict, "COM1: TARN-R200 V5.1R23 before the run."));
    EXPECT_TRUE(says(verdict, "Image: local.hex, TARN-R200 V5.2R1, " + std::to_string(sizeof kImage - 1) +
                                  " bytes, SHA-256 " + bench.digest.sha256(kImage) + "."));
    EXPECT_TRUE(says(verdict, "The device now answers with TARN-R200 V5.2R1."));
    EXPECT_TRUE(says(verdict, "1 record was repeated."));
    EXPECT_TRUE(verdict.steps.empty());
    const auto logged = log();
    EXPECT_EQ(logged.substr(logged.size() - 15), "Update Finish\r\n");  // the proof adds nothing

    verdict = judge("unplug-request@01");
    EXPECT_EQ(verdict.kind, Verdict::Kind::untouched);
    devices.clear();
    RunReport report;
    report.end = RunEnd::updated;
    report.portName = "COM9";
    report.version = "V5.2R1";
    EXPECT_TRUE(says(updater.conclude(report, true), "did not answer when it was asked"));
    EXPECT_TRUE(says(verdictFor(report, Proof{true, "TARN V5.1"}), "TARN V5.1; the image's version is V5.2R1."));
    report.portLost = true;
    EXPECT_TRUE(says(verdictFor(report, std::nullopt), "was lost when the device was to restart"));
}

TEST_F(VerdictOfARun, IsUntouchedAsLongAsTheDeviceIs) {
    auto verdict = judge("refuse@1f=07");
    EXPECT_EQ(verdict.kind, Verdict::Kind::untouched);
    EXPECT_TRUE(says(verdict, "did not agree to switch"));
    EXPECT_TRUE(says(verdict, "It is safe to unplug the device."));
    bench.face.agrees = false;
    EXPECT_TRUE(says(judge(""), "No image was chosen."));
    bench.face.agrees = true;
    bench.face.onSelection = [this] { presenter.cmdCancel_Click(); };
    verdict = judge("");
    EXPECT_EQ(verdict.headline, "The device was not changed.");
    EXPECT_TRUE(says(verdict, "The run was cancelled."));
    EXPECT_TRUE(verdict.steps.empty());
}

TEST_F(VerdictOfARun, IsTheBootLoaderFromThereOn) {
    auto verdict = judge("drop@2");  // the answer to the switch
    EXPECT_EQ(verdict.kind, Verdict::Kind::uncertain);
    EXPECT_TRUE(says(verdict, "was asked to switch into its boot loader and did not confirm it"));
    EXPECT_TRUE(says(verdict, "It is safe to unplug the device."));
    EXPECT_TRUE(says(verdict, "1. Switch the device off and on."));
    verdict = judge("boot-deaf=9000");
    EXPECT_EQ(verdict.headline, "The device waits in its boot loader. Its firmware is still there.");
    EXPECT_TRUE(says(verdict, "1. Switch the device off and on."));
    EXPECT_TRUE(verdict.isSafeToUnplug && !verdict.callsForForce);
    for (const char* fault : {"nak@:0400100005060708D2x*", "erase-nakx*", "unplug@1", "unplug-erase"}) {
        verdict = judge(fault);
        EXPECT_EQ(verdict.kind, Verdict::Kind::waiting) << fault;
        const bool isErased = std::string(fault).find("erase") == std::string::npos;
        EXPECT_EQ(verdict.headline, isErased ? "The device waits in its boot loader. It has no working firmware yet."
                                             : "The device waits in its boot loader. Its firmware may be gone.")
            << fault;
        const bool isLost = std::string(fault).find("unplug") == 0;
        EXPECT_EQ(says(verdict, "Better leave the device plugged in"), !isLost) << fault;
        EXPECT_TRUE(says(verdict, isLost ? "1. Plug it in again" : "1. Leave the device connected")) << fault;
        EXPECT_TRUE(says(verdict, "2. Force an update")) << fault;
        EXPECT_TRUE(verdict.callsForForce) << fault;
    }
}

TEST_F(VerdictOfARun, LeadsFromABootLoaderThatWasSeenToTheRescueAndItsProof) {
    models::DeviceOptions options;
    options.startsInBoot = true;
    options.baud = 9600;
    options.bootBaud = 57600;
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options, 3);
    loadImage();
    auto verdict = updater.conclude(start(), true);
    EXPECT_EQ(verdict.headline, "A device waits in its boot loader; nothing was changed.");
    EXPECT_TRUE(says(verdict, "COM3 answers with the prompt of a boot loader."));
    EXPECT_TRUE(says(verdict, "2. Force an update (Force ISP, or --force on the console)"));
    EXPECT_FALSE(verdict.isSafeToUnplug) << "its steps say to leave it connected";
    verdict = updater.conclude(start(true), true);
    EXPECT_EQ(verdict.headline, "The device is updated.");
    EXPECT_TRUE(says(verdict, "The device now answers with TARN-R200 V5.2R1."));
}

TEST(VerdictOfTheSite, RepeatsTheLibrarysWords) {
    RunReport report;
    report.end = RunEnd::loginFailed;
    report.siteFailure = {SiteFailure::Kind::unreachable, "the server h cannot be reached: Could not resolve host"};
    const auto lines = verdictLines(verdictFor(report, std::nullopt));
    EXPECT_EQ(lines[1], "The login failed: the server h cannot be reached: Could not resolve host.");
    EXPECT_EQ(lines[3], "1. Check server, user name and password.");
}

TEST(Meter, CountsRecordsCalmly) {
    ProgressMeter meter;
    std::uint32_t tick = 0xFFFFFF00;  // wraps on the way
    meter.phase(RunPhase::program, tick);
    meter.records(1000);
    EXPECT_EQ(meter.text(), "Programming");
    meter.progress(0, 50000, tick);
    std::optional<int> last;
    for (int i = 1; i <= 1000; ++i) {
        tick += i % 2 ? 15 : 25;  // 50 a second
        meter.progress(i * 40, 50000, tick);
        if (last) {
            EXPECT_LE(*meter.remaining(), *last) << i;
        }
        last = meter.remaining();
        if (i == 500) {
            EXPECT_EQ(meter.text(), "Programming: 50 %, 500 of 1000 records, 50 a second, 10 s left");
            EXPECT_EQ(meter.title(), "50 % Programming");
        }
        if (i == 100) {
            EXPECT_EQ(*meter.remaining(), 20);
        }
    }
    EXPECT_EQ(meter.percent(), 100);
    meter.progress(0, 0, tick);
    meter.phase(RunPhase::reset, tick);
    EXPECT_EQ(meter.text(), "Restarting the device");
    meter.phase(RunPhase::idle, tick);
    EXPECT_EQ(meter.text() + meter.title(), "");
}

TEST(Meter, CountsTheBytesOfATransfer) {
    ProgressMeter meter;
    meter.phase(RunPhase::image, 0);
    meter.progress(0, 100, 0);
    for (int ms = 100; ms <= 1000; ms += 100) meter.transfer(ms * 2000, 4000000, static_cast<std::uint32_t>(ms));
    meter.progress(50, 100, 1000);
    EXPECT_EQ(meter.text(), "Fetching the image: 2000 kB of 4000 kB, 2000 kB a second");
    EXPECT_EQ(meter.title(), "50 % Fetching the image");
    EXPECT_FALSE(meter.isUnmeasured());
    meter.transfer(2100000, 0, 1050);
    EXPECT_TRUE(meter.isUnmeasured()) << "the server does not tell the size";
    meter.phase(RunPhase::erase, 1100);
    EXPECT_TRUE(meter.isUnmeasured());
    meter.phase(RunPhase::program, 1200);
    EXPECT_FALSE(meter.isUnmeasured());
}

TEST(Advice, NamesTheCure) {
    fakes::SerialBench serial;
    fakes::FakePortInspector inspector;
    PortAdvisor advisor(serial.control, serial.map, inspector);
    models::Device device({});
    serial.plug(1, device);
    serial.port.CommPort("COM1");
    serial.control.markBusy(1);
    serial.port.PortOpen(true);
    const auto node = serial.control.openFailure().path;
    EXPECT_EQ(advisor.refusal("COM1"), "COM1 (" + node + ") is in use by another program. Close that and start again.");
    inspector.holders[node] = {4711, "minicom"};
    EXPECT_EQ(advisor.refusal("COM1"),
              "COM1 (" + node + ") is in use by minicom (process 4711). Close that and start again.");
    serial.control.markBusy(1, false);
    serial.control.markForbidden(1);
    serial.port.PortOpen(true);
    EXPECT_EQ(advisor.refusal("COM1"),
              "You may not use COM1 (" + node + "), which belongs to the group dialout. Run \"sudo chown olive " +
                  node +
                  "\" and start again; for good, join the group: \"sudo adduser olive dialout\", "
                  "then log in anew.");
    advisor.readerFailure = [] { return "/dev/hidraw0: Permission denied"; };
    EXPECT_EQ(
        advisor.refusal("HID1"),
        "HID1 does not open: /dev/hidraw0: Permission denied. Plug the reader in again; when this user may not use "
        "it, install the udev rules of this program.");
    inspector.probed.insert("/dev/ttyS1");
    EXPECT_EQ(advisor.beforeScan({"", "COM1", "HID1"}).size(), 1U);
}

}  // namespace
}  // namespace corvane
