#include "bench/BenchOptions.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace corvane::bench {
namespace {

using models::Kind;

TEST(BenchOptions, ReadDevices) {
    const auto options = benchOptions(
        {"--device",
         "kind=tarn,baud=9600,boot-baud=57600,prompt=M51>,version=Größe\\, 1,next-version=V2,version-nul=no",
         "--device=port=1,kind=boot,in-boot=yes,password=p\\\\w,wrong-rate=garbage,fault=nak@5x2,fault=unplug,replug="
         "300",
         "--device", "hid=yes,reader=Größer,reader-version=K 9,baud=9600", "--device", "hid=yes", "--device", "hid=no",
         "--config-dir=/c", "--setting", "FTP/Server=a=b", "--image", "i.hex", "--verify", "--", "run", "--me"});
    std::string names;
    for (const auto& device : options.devices) names += (device.isReader ? "H" : "C") + std::to_string(device.port);
    EXPECT_EQ(names, "C2C1H1H2C3") << "the lowest ones that nobody asks for";
    const auto& [first, second] = std::tie(options.devices[0], options.devices[1]);
    EXPECT_EQ(first.device.kind, Kind::tarn);
    EXPECT_EQ(std::pair(first.device.baud, first.device.bootBaud), std::pair(9600U, 57600U));
    EXPECT_EQ(first.device.prompt + first.device.version + first.device.nextVersion, "M51>Gr\xF6\xDF\x65, 1V2");
    EXPECT_FALSE(first.device.versionEndsInNul || first.replugMs);
    EXPECT_EQ(second.device.kind, Kind::boot);
    EXPECT_TRUE(second.device.startsInBoot);
    EXPECT_EQ(second.device.password, "p\\w");
    EXPECT_EQ(second.device.wrongRate, models::WrongRate::garbage);
    EXPECT_TRUE(second.device.faults.has(models::FaultKind::nak) &&
                second.device.faults.has(models::FaultKind::unplug));
    EXPECT_EQ(second.replugMs, 300);
    const auto& [reader, other] = std::tie(options.devices[2].reader, options.devices[3].reader);
    EXPECT_EQ(reader.name + reader.version, "Gr\xF6\xDF\x65rK 9");
    EXPECT_NE(reader.serialNumber, other.serialNumber);
    EXPECT_EQ(options.configFolder, "/c");
    const auto& setting = options.settings.at(0);
    EXPECT_EQ(setting.section + "|" + setting.key + "|" + setting.value, "FTP|Server|a=b");
    EXPECT_EQ(options.command, (std::vector<std::string>{"run", "--me"}));
}

TEST(BenchOptions, SayWhatIsWrong) {
    const struct {
        std::vector<std::string> arguments;
        const char* complaint;
    } rows[] = {
        {{}, "no --device"},
        {{"--devise", "x"}, "unknown option \"--devise\""},
        {{"--device"}, "--device needs a value"},
        {{"--verify=yes", "--device", ""}, "--verify takes no value"},
        {{"--device", "", "--verify"}, "--verify needs an --image"},
        {{"--device", "", "--"}, "no command behind \"--\""},
        {{"--device", "port=2", "--device", "port=2"}, "two devices on COM2"},
        {{"--device", "", "--setting", "Server=x/y"}, "--setting is SECTION/KEY=VALUE, not \"Server=x/y\""},
        {{"--device", "speed=1"}, "device: \"speed\" is no key"},
        {{"--device", "baud=19200,baud=1"}, "device: \"baud\" is given twice"},
        {{"--device", "baud=19k"}, "device: \"baud\" takes a number from 50 to 4000000, not \"19k\""},
        {{"--device", "kind=lamp"}, "device: \"kind\" is TarnPlus, Tarn, boot, silent, babbling, not \"lamp\""},
        {{"--device", "port=3,hid=yes"},
         "device: \"port\" is for serial ports; HID readers are numbered as they are given"},
        {{"--device", "reader=K"}, "device: \"reader\" needs hid=yes"},
        {{"--device", "hid=yes,reader=a\tb"}, "device: \"reader\" takes up to 126 printable characters"},
        {{"--device", "fault=nak@x"}, "fault \"nak@x\": the place \"x\" is no number"},
    };
    for (const auto& row : rows) {
        try {
            benchOptions(row.arguments);
            ADD_FAILURE() << row.complaint;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), row.complaint);
        }
    }
}

}  // namespace
}  // namespace corvane::bench
