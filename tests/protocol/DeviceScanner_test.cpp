#include "protocol/DeviceScanner.h"

#include <gtest/gtest.h>

#include "models/Device.h"
#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

constexpr char kAllMissed[] =
    "   Scan by 19200,N,8,1, No Device!!\r\n"
    "   Scan by 115200,N,8,1, No Device!!\r\n"
    "   Scan by 38400,N,8,1, No Device!!\r\n"
    "   Scan by 57600,N,8,1, No Device!!\r\n"
    "   Scan by 9600,N,8,1, No Device!!\r\n";

/// The other kind of port; none of them opens.
class OtherPort : public clsIMScomm {
public:
    explicit OtherPort(std::string prefix) : prefix_(std::move(prefix)) {}
    std::vector<std::string> names;
    std::string selected;
    bool IsMyCommPort(const std::string& name) override { return name.compare(0, 3, prefix_) == 0; }
    std::int32_t NumberOfCommPorts() override { return static_cast<std::int32_t>(names.size()); }
    std::string EnumCommPort(std::int32_t index) override { return names[static_cast<std::size_t>(index)]; }
    void CommPort(const std::string& name) override { selected = name; }

private:
    std::string prefix_;
};

class Scan : public fakes::OverEachPort {
protected:
    models::Device& plug(std::int16_t number, models::DeviceOptions options = {}) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        bench.plug(number, *devices.back());
        return *devices.back();
    }

    static models::DeviceOptions silent() {
        models::DeviceOptions options;
        options.kind = models::Kind::silent;
        return options;
    }

    std::string scan(bool acceptIsp = false) {
        face.log.clear();
        face.panel.clear();
        return scanner.DeviceScan(inIsp, acceptIsp);
    }

    /// The next scan, after the run before has closed the port.
    std::string scanAgain() {
        session.comm->PortOpen(false);
        return scan();
    }

    /// A text about serial ports, COM1 and so on, as it is over this kind of port, with the names of both exchanged.
    static std::string here(std::string text) {
        for (std::size_t at = 0; isHid() && at + 3 <= text.size(); ++at) {
            const auto name = text.substr(at, 3);
            if (name == "COM" || name == "HID") text.replace(at, 3, name == "COM" ? "HID" : "COM");
        }
        return text;
    }

    OtherPort other{here("HID")};
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    DeviceScanner scanner{session, bench.port, other, face, face};
    std::vector<std::unique_ptr<models::Device>> devices;
    bool inIsp = false;
};

TEST_P(Scan, FindsADeviceAtEachRate) {
    const std::string lines = kAllMissed;
    std::size_t before = 0;
    for (const std::uint32_t baud : {19200U, 115200U, 38400U, 57600U, 9600U}) {
        models::DeviceOptions options;
        options.baud = baud;
        options.wrongRate = models::WrongRate::garbage;
        bench.unplugAll();
        plug(1, options);
        session.protocolName = "Tarn";
        bench.port.DTREnable(false);
        EXPECT_EQ(scan(), "TARN-R200 V5.1R23") << baud;
        EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + lines.substr(0, before) + "   Scan by " +
                                std::to_string(baud) + ",N,8,1");
        EXPECT_EQ(session.protocolName, "TarnPlus");
        EXPECT_TRUE(bench.port.PortOpen());
        EXPECT_TRUE(bench.port.RTSEnable());
        EXPECT_EQ(bench.port.DTREnable(), !isHid());  // a HID reader has no such line
        session.comm->PortOpen(false);
        before = lines.find('\n', before) + 1;
    }
}

TEST_P(Scan, AsksASilentPortEverythingAndTakesItsTime) {
    plug(1, silent());
    session.manualPort = true;  // a click before the scan means nothing
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + kAllMissed);
    EXPECT_FALSE(bench.port.PortOpen());
    const Bytes asked = bytesOf(std::string("\r\r\x01\x00\x01\x00\x50\x70", 8));
    Bytes askedAt9600 = asked;
    for (const char c : std::string("\x02"
                                    "D00\r"))
        askedAt9600.push_back(static_cast<std::uint8_t>(c));
    const auto& heard = devices[0]->log().heard;
    EXPECT_EQ(heard.at(19200), asked);
    EXPECT_EQ(heard.at(9600), askedAt9600);
    // 50 ms, then per setting 50 + 2 * 150 + 500 + 3000 ms, and for the older protocol another 500 + 500. Opening and
    // closing a HID port takes 150 + 50 ms more, and some commands.
    EXPECT_GE(bench.runtime.ms(), isHid() ? 20500 : 20300);
    EXPECT_LE(bench.runtime.ms(), isHid() ? 20850 : 20600);
    EXPECT_EQ(face.panel, (std::vector<std::string>{here("show ,COM1,"), "off 0", "off 1", "hide"}));
}

TEST_P(Scan, FindsTheOlderProtocolAt9600WithItsOddLine) {
    models::DeviceOptions options;
    options.kind = models::Kind::tarn;
    options.baud = 9600;
    options.version = "R100 V3.0R2";
    plug(1, options);
    EXPECT_EQ(scan(), "R100 V3.0R2");
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + kAllMissed);
    EXPECT_EQ(session.protocolName, "Tarn");
    EXPECT_EQ(devices[0]->log().commands, (std::vector<std::string>{"D00", "F"}));
}

TEST_P(Scan, TakesNoOtherAnswerForTheOlderProtocol) {
    struct Case {
        const char* fault;
        const char* version;
        bool portStaysOpen;
    };
    for (const auto& one : {Case{"tarn@F=BV1", "", false}, Case{"tarn@F=A", "", true}}) {
        models::DeviceOptions options;
        options.kind = models::Kind::tarn;
        options.baud = 9600;
        options.faults = {one.fault};
        bench.unplugAll();
        plug(1, options);
        EXPECT_EQ(scan(), one.version) << one.fault;
        EXPECT_EQ(bench.port.PortOpen(), one.portStaysOpen) << one.fault;
        session.comm->PortOpen(false);
    }
}

TEST_P(Scan, WaitsForTheOlderProtocolsAnswers) {
    struct Case {
        int firstAnswer, secondAnswer;  // ms after the question, which takes 3 to 6 ms itself
        const char* version;
    };
    for (const auto& one : {Case{485, 1, "V1"}, Case{500, 1, ""}, Case{1, 290, "V1"}, Case{1, 300, ""}}) {
        fakes::ScriptedPeer peer;
        bench.unplugAll();
        bench.plug(1, peer);
        peer.answer(bytesOf(std::string("D00\r")), {{one.firstAnswer, bytesOf(std::string("\x02ok\r"))}});
        peer.answer(bytesOf(std::string("F\r")), {{one.secondAnswer, bytesOf(std::string("\x02"
                                                                                         "AV1\r"))}});
        EXPECT_EQ(scan(), one.version) << one.firstAnswer << " " << one.secondAnswer;
        session.comm->PortOpen(false);
    }
}

TEST_P(Scan, PassesABootLoaderByUnlessItIsAccepted) {
    models::DeviceOptions options;
    options.kind = models::Kind::boot;
    plug(1, options);
    plug(2);
    EXPECT_EQ(scan(), "TARN-R200 V5.1R23");
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n   Scan by 19200,N,8,1, In ISP Mode!!\r\n"
                             "Open COM2 ... < OK\r\n   Scan by 19200,N,8,1"));
    EXPECT_FALSE(inIsp);
    EXPECT_EQ(session.rememberedPort, "");  // behind the last port comes the empty entry
    session.comm->PortOpen(false);
    EXPECT_EQ(scan(true), "Unknown Device");
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n   Scan by 19200,N,8,1"));
    EXPECT_TRUE(inIsp);
    EXPECT_EQ(session.rememberedPort, "");
}

TEST_P(Scan, StartsBehindTheDeviceThatItFoundLast) {
    for (const std::int16_t number : {1, 2, 3}) plug(number);
    other.names = {here("HID1")};
    const auto opened = [this] { return face.log.substr(0, face.log.find(" ...")); };
    scan();
    EXPECT_EQ(opened(), here("Open COM1"));
    scanAgain();
    EXPECT_EQ(opened(), here("Open COM2"));
    EXPECT_EQ(face.panel.front(), here("show COM2,COM3,HID1,COM1,"));
    scanAgain();
    EXPECT_EQ(opened(), here("Open COM3"));
    EXPECT_EQ(session.rememberedPort, here("HID1"));
    scanAgain();
    EXPECT_EQ(face.log.substr(0, 40), here("Open HID1 ... < NG\r\nOpen COM1 ... < OK\r\n"));
    EXPECT_EQ(other.selected, here("HID1"));
    session.comm->PortOpen(false);
    bench.unplugAll();
    plug(1);
    session.rememberedPort = here("COM12");  // holds "COM1", and that is enough
    other.names.clear();
    scan();
    EXPECT_EQ(face.panel.front(), here("show COM1,"));
    EXPECT_EQ(session.rememberedPort, here("COM1"));
}

TEST_P(Scan, LogsPortsThatDoNotOpenAndLeavesOthersOut) {
    bench.refuse(1);
    plug(2);
    if (!isHid()) bench.refuse(17);  // a HID port may have any number
    EXPECT_EQ(scan(), "TARN-R200 V5.1R23");
    EXPECT_EQ(face.log, here("Open COM1 ... < NG\r\nOpen COM2 ... < OK\r\n   Scan by 19200,N,8,1"));
    EXPECT_EQ(face.panel[3], here("refused COM1"));
    scanner.onlyPort(here("COM1"));
    EXPECT_EQ(scanAgain(), "");
    EXPECT_EQ(face.log, here("Open COM1 ... < NG\r\n"));
    scanner.onlyPort(here("COM17"));
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, "");
}

TEST_P(Scan, LetsEventsRunAtEachPortThatDoesNotOpen) {
    for (const std::int16_t number : {1, 2, 3}) bench.refuse(number);
    plug(4, silent());
    std::vector<std::int64_t> moments;
    for (const int ms : {10, 60, 110}) bench.runtime.at(ms, [&] { moments.push_back(bench.runtime.ms()); });
    bench.runtime.at(110, [this] { session.stop = session.cancel = true; });
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(moments, (std::vector<std::int64_t>{50, 100, 150}));
    EXPECT_EQ(face.log.substr(face.log.find(here("Open COM4"))),
              here("Open COM4 ... < OK\r\n   Scan by 19200,N,8,1, No Device!!\r\n"));
}

TEST_P(Scan, EndsAfterTheSettingAtHandWhenCancelled) {
    models::DeviceOptions babbling;
    babbling.kind = models::Kind::babbling;
    for (const auto& options : {silent(), babbling}) {
        bench.unplugAll();
        plug(1, options);
        plug(2);
        const auto start = bench.runtime.ms();
        session.cancel = false;
        bench.runtime.at(start + 1000, [this] { session.stop = session.cancel = true; });
        EXPECT_EQ(scan(), "");
        EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n   Scan by 19200,N,8,1, No Device!!\r\n"));
        EXPECT_LE(bench.runtime.ms() - start, 1120);
        EXPECT_TRUE(bench.port.PortOpen());
        session.comm->PortOpen(false);
    }
}

TEST_P(Scan, JumpsToAClickedPortAndComesBackToTheNextSetting) {
    plug(1, silent());
    plug(2, silent());
    const auto click = [this](std::int16_t index) {
        session.manualPort = true;
        session.manualPortIndex = index;
    };
    bench.runtime.at(1000, [&] { click(2); });
    bench.runtime.at(5000, [&] { click(1); });
    EXPECT_EQ(scan(), "");
    const std::string lines = kAllMissed;
    const auto rest = lines.substr(lines.find('\n') + 1);
    const std::string first = "   Scan by 19200,N,8,1, No Device!!\r\n";
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n" + first + "Open COM2 ... < OK\r\n" + first +
                             "Open COM1 ... < OK\r\n" + rest + "Open COM2 ... < OK\r\n" + rest));
    EXPECT_EQ(face.panel, (std::vector<std::string>{here("show ,COM1,COM2,"), "off 0", "off 1", "on 1", "off 2", "on 2",
                                                    "off 1", "off 2", "hide"}));
}

TEST_P(Scan, GoesThroughTheSettingsOfALostPortAtOnce) {
    fakes::ScriptedPeer peer;
    bench.plug(1, peer);
    plug(2);
    peer.unplugAt(1000);
    EXPECT_EQ(scan(), "TARN-R200 V5.1R23");
    EXPECT_EQ(face.log,
              here("Open COM1 ... < OK\r\n") + kAllMissed + here("Open COM2 ... < OK\r\n   Scan by 19200,N,8,1"));
    EXPECT_LE(bench.runtime.ms(), 1000 + 4 * 60 + 1500);
}

TEST_P(Scan, NamesNoPortsWhenThereAreNone) {
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, "");
    EXPECT_EQ(bench.runtime.ms(), 0);
}

CORVANE_OVER_EACH_PORT(Scan);

}  // namespace
}  // namespace corvane
