#include "protocol/DeviceScanner.h"

#include "Dialogue.h"

namespace corvane::tests {

constexpr char kAllMissed[] =
    "   Scan by 19200,N,8,1, No Device!!\r\n"
    "   Scan by 115200,N,8,1, No Device!!\r\n"
    "   Scan by 38400,N,8,1, No Device!!\r\n"
    "   Scan by 57600,N,8,1, No Device!!\r\n"
    "   Scan by 9600,N,8,1, No Device!!\r\n";
const std::string kFirstMissed = "   Scan by 19200,N,8,1, No Device!!\r\n";

/// The other kind of port; none of them opens.
struct OtherPort : clsIMScomm {
    explicit OtherPort(std::string prefix) : prefix_(std::move(prefix)) {}
    std::vector<std::string> names;
    std::string selected;
    bool IsMyCommPort(const std::string& name) override { return name.starts_with(prefix_); }
    std::int32_t NumberOfCommPorts() override { return static_cast<std::int32_t>(names.size()); }
    std::string EnumCommPort(std::int32_t index) override { return names[static_cast<std::size_t>(index)]; }
    void CommPort(const std::string& name) override { selected = name; }

private:
    std::string prefix_;
};

struct Scan : Dialogue {
    models::Device& plug(std::int16_t number, models::DeviceOptions options = {}) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        bench.plug(number, *devices.back());
        return *devices.back();
    }

    /// The next scan, after the run before has closed the port.
    std::string scan() {
        if (session.comm->PortOpen()) session.comm->PortOpen(false);
        face.log.clear();
        face.panel.clear();
        begin = bench.runtime.ms();
        bool inIsp = false;
        return scanner.DeviceScan(inIsp, false);
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
    DeviceScanner scanner{session, bench.port, other, face, face};
    std::vector<std::unique_ptr<models::Device>> devices;
};

TEST_P(Scan, FindsADeviceAtEachRate) {
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, "");  // there is no port
    const std::string lines = kAllMissed;
    std::size_t before = 0;
    for (const std::uint32_t baud : {19200U, 115200U, 38400U, 57600U, 9600U}) {
        bench.unplugAll();
        plug(1, {.baud = baud, .wrongRate = models::WrongRate::garbage});
        session.protocolName = "Tarn";
        bench.port.DTREnable(false);
        EXPECT_EQ(scan(), "TARN-R200 V5.1R23") << baud;
        EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + lines.substr(0, before) + "   Scan by " +
                                std::to_string(baud) + ",N,8,1");
        EXPECT_EQ(session.protocolName, "TarnPlus");
        EXPECT_TRUE(bench.port.PortOpen() && bench.port.RTSEnable());
        EXPECT_EQ(bench.port.DTREnable(), !isHid());  // a HID reader has no such line
        session.comm->PortOpen(false);
        before = lines.find('\n', before) + 1;
    }
}

TEST_P(Scan, AsksASilentPortEverythingAndTakesItsTime) {
    plug(1, {.kind = models::Kind::silent});
    session.manualPort = true;  // a click before the scan means nothing
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + kAllMissed);
    EXPECT_FALSE(bench.port.PortOpen());
    const auto& heard = devices[0]->log().heard;
    EXPECT_EQ(textOf(heard.at(19200)), std::string("\r\r\x01\x00\x01\x00\x50\x70", 8));
    EXPECT_EQ(textOf(heard.at(9600)), std::string("\r\r\x01\x00\x01\x00\x50\x70\002D00\r", 13));
    // 50 ms, then per setting 50 + 2 * 150 + 500 + 3000 ms, and for the older protocol another 500 + 500. Opening and
    // closing a HID port takes 150 + 50 ms more, and some commands.
    expectMs(isHid() ? 20500 : 20300, isHid() ? 20850 : 20600);
    EXPECT_EQ(face.panel, (std::vector<std::string>{here("show ,COM1,"), "off 0", "off 1", "hide"}));
}

TEST_P(Scan, SaysWhereSomethingAnswersThatCannotBeRead) {
    plug(1, {.kind = models::Kind::tarnPlus, .faults = {"crcx*"}});
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(scanner.unreadable(),
              here("something answers on COM1 at 19200, but not in a way that can be read: noise, or another kind of "
                   "device"));
    plug(1, {.kind = models::Kind::silent});
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(scanner.unreadable(), "");
}

TEST_P(Scan, FindsTheOlderProtocolAt9600WithItsOddLine) {
    // firstAnswer, secondAnswer: ms after the question, which takes 3 to 6 ms itself
    const std::tuple<int, int, const char*, const char*, bool> cases[] = {
        {485, 1, "\002AV1\r", "V1", true}, {500, 1, "\002AV1\r", "", false}, {1, 290, "\002AV1\r", "V1", true},
        {1, 300, "\002AV1\r", "", false},  {1, 1, "\002BV1\r", "", false},   {1, 1, "\002A\r", "", true},
    };
    for (const auto& [firstAnswer, secondAnswer, answer, version, staysOpen] : cases) {
        SCOPED_TRACE(std::to_string(firstAnswer) + " " + std::to_string(secondAnswer) + answer);
        fakes::ScriptedPeer tarn;
        session.protocolName.clear();
        bench.unplugAll();
        bench.plug(1, tarn);
        tarn.answer(bytesOf(std::string("D00\r")), {{firstAnswer, bytesOf(std::string("\002ok\r"))}});
        tarn.answer(bytesOf(std::string("F\r")), {{secondAnswer, bytesOf(std::string(answer))}});
        EXPECT_EQ(scan(), version);
        EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n") + kAllMissed);
        EXPECT_EQ(session.comm->PortOpen(), staysOpen);
        EXPECT_EQ(session.protocolName == "Tarn", staysOpen);
        session.comm->PortOpen(false);
    }
}

TEST_P(Scan, StartsBehindTheDeviceThatItFoundLast) {
    for (const std::int16_t number : {1, 2, 3}) plug(number);
    other.names = {here("HID1")};
    scan();
    scan();
    EXPECT_EQ(face.log.substr(0, 9), here("Open COM2"));
    EXPECT_EQ(face.panel.front(), here("show COM2,COM3,HID1,COM1,"));
    scan();
    EXPECT_EQ(session.rememberedPort, here("HID1"));
    scan();
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

TEST_P(Scan, TakesPortsInTurnWhoseNamesBeginAlike) {
    if (isHid()) return;  // a library numbers its readers without gaps
    plug(1);
    plug(10);
    scan();
    scan();
    EXPECT_EQ(session.comm->CommPort(), "COM10");
    scan();
    EXPECT_EQ(session.comm->CommPort(), "COM1");
}

TEST_P(Scan, LogsPortsThatDoNotOpenAndLeavesOthersOut) {
    bench.refuse(1);
    plug(2);
    if (!isHid()) bench.refuse(17);  // a HID port may have any number
    EXPECT_EQ(scan(), "TARN-R200 V5.1R23");
    EXPECT_EQ(face.log, here("Open COM1 ... < NG\r\nOpen COM2 ... < OK\r\n   Scan by 19200,N,8,1"));
    EXPECT_EQ(face.panel[3], here("refused COM1"));
    scanner.onlyPort(here("COM1"));
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, here("Open COM1 ... < NG\r\n"));
    scanner.onlyPort(here("COM17"));
    EXPECT_EQ(scan(), "");
    EXPECT_EQ(face.log, "");
}

TEST_P(Scan, JumpsToAClickedPortAndComesBackToTheNextSetting) {
    plug(1, {.kind = models::Kind::silent});
    plug(2, {.kind = models::Kind::silent});
    const auto click = [this](std::int16_t index) {
        session.manualPort = true;
        session.manualPortIndex = index;
    };
    bench.runtime.at(1000, [&] { click(2); });
    bench.runtime.at(5000, [&] { click(1); });
    EXPECT_EQ(scan(), "");
    const auto rest = std::string(kAllMissed).substr(kFirstMissed.size());
    EXPECT_EQ(face.log, here("Open COM1 ... < OK\r\n" + kFirstMissed + "Open COM2 ... < OK\r\n" + kFirstMissed +
                             "Open COM1 ... < OK\r\n" + rest + "Open COM2 ... < OK\r\n" + rest));
    EXPECT_EQ(face.panel, (std::vector<std::string>{here("show ,COM1,COM2,"), "off 0", "off 1", "on 1", "off 2", "on 2",
                                                    "off 1", "off 2", "hide"}));
}

CORVANE_OVER_EACH_PORT(Scan);

}  // namespace corvane::tests
