#include "RunBench.h"

namespace corvane {
namespace {

/// What becomes of the device, and what its operator has to know of that. tests/console walks through the causes.
class VerdictOfARun : public RunTest {
protected:
    Verdict judge(std::string_view fault, bool prove = false) {
        asksAfterwards(prove);
        models::DeviceOptions options;
        options.nextVersion = "TARN-R200 V5.2R1";
        plugOnly({}, options);
        if (!fault.empty()) device().faults().add(fault);
        loadImage();
        return updater.conclude(start());
    }
};

TEST_F(VerdictOfARun, IsUpdatedWithItsProof) {
    auto verdict = judge("nak@:0400100005060708D2", true);
    EXPECT_EQ(verdict.kind, Verdict::Kind::updated);
    const std::vector<std::string> facts(verdict.facts.begin(), verdict.facts.end() - 1);
    EXPECT_EQ(facts,
              (std::vector<std::string>{"COM1: TARN-R200 V5.1R23 before the run.",
                                        "Image: local.hex, TARN-R200 V5.2R1, " + std::to_string(sizeof kImage - 1) +
                                            " bytes, SHA-256 " + digest.sha256(kImage) + ".",
                                        "The device now answers with TARN-R200 V5.2R1.", "1 record was repeated."}));
    EXPECT_TRUE(verdict.isSafeToUnplug && verdict.steps.empty());
    EXPECT_TRUE(log().ends_with("Update Finish\r\n")) << "the proof adds nothing";
    when("Update Finish\r\n", [this] { device().unplug(); });
    verdict = judge("");
    EXPECT_EQ(verdict.headline, "The device is programmed and was not heard of since.");
    EXPECT_TRUE(verdict.facts[0].ends_with("nothing has answered since: COM1 was lost.")) << verdict.facts[0];
}

TEST_F(VerdictOfARun, SaysWhatTheDeviceIsNow) {
    const std::string waits = "The device waits in its boot loader. ", offAndOn = "Switch the device off and on";
    const struct {
        const char* fault;
        Verdict::Kind kind;
        std::string headline;
        const char* unplug;
        std::string step;
        bool callsForForce;
    } cases[] = {
        {"refuse@1f=07", Verdict::Kind::untouched, "The device was not changed.", "It is safe", offAndOn, false},
        {"drop@2", Verdict::Kind::uncertain, "The device may wait in its boot loader. Its firmware is still there.",
         "It is safe", offAndOn, false},
        {"boot-deaf=9000", Verdict::Kind::waiting, waits + "Its firmware is still there.", "It is safe", offAndOn,
         false},
        {"erase-nakx*", Verdict::Kind::waiting, waits + "Its firmware may be gone.", "Better", "Leave", true},
        {"nak@:0400100005060708D2x*", Verdict::Kind::waiting, waits + "It has no working firmware yet.", "Better",
         "Leave the device", true},
        {"unplug@1", Verdict::Kind::waiting, waits + "It has no working firmware yet.", "", "Plug it in again", true},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.fault);
        const auto verdict = judge(one.fault);
        EXPECT_EQ(verdict.kind, one.kind);
        EXPECT_EQ(verdict.headline, one.headline);
        EXPECT_EQ(verdict.unplugText().empty(), *one.unplug == '\0');
        EXPECT_TRUE(verdict.unplugText().starts_with(one.unplug));
        EXPECT_TRUE(verdict.steps.at(0).starts_with(one.step)) << verdict.steps[0];
        EXPECT_EQ(verdict.callsForForce, one.callsForForce);
        EXPECT_EQ(verdict.isSafeToUnplug, !one.callsForForce);
    }
    when("[Local Site]\r\n", [this] { device().unplug(); });
    face.closesSelection = true;
    const auto verdict = judge("");
    EXPECT_EQ(verdict.facts[1], "COM1 was lost: it was unplugged, or its cable came loose.");
    EXPECT_EQ(verdict.unplugText(), "");
}

}  // namespace
}  // namespace corvane
