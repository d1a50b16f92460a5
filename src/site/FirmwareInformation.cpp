#include "site/FirmwareInformation.h"

#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// The boot loader's rate as a whole number; -1 when the text is none or no 32-bit number.
std::int32_t baudRate(const std::string& text) {
    if (!isNumeric(text)) return -1;
    try {
        return toLong(leadingNumber(text));
    } catch (const RuntimeError&) {
        return -1;
    }
}

}  // namespace

bool FTP_CheckFirmware(InfReader& reader, Log& log, const std::string& szDeviceVersion,
                       FirmwareInformation& information) {
    const auto* offer = reader.information();
    if (!offer) {
        log.ShowInfo("Not found firmware informat file!!\r\n");
        return false;
    }
    const auto section = szDeviceVersion.substr(0, szDeviceVersion.find(' '));
    const auto read = [&](const std::string& key) { return offer->value(section, key); };
    information.product = offer->value(section, "Product", "Un-Know");
    if (!information.isKnown()) {
        log.ShowInfo("No new version in server!!\r\n");
        return false;
    }
    information.version = read("Version");
    information.updateInfo = read("Desc");
    information.firmwareFile = read("File");
    information.ispBaudRate = baudRate(read("ISP_BAUDRATE"));
    information.digest = lowerCase(read("SHA256"));
    information.isSigned = offer->voucher().has_value();
    for (std::size_t n = 0; n < information.linkTitle.size(); ++n) {
        information.linkTitle[n] = read("LinkDOC" + std::to_string(n + 1));
        information.linkUrl[n] = read("LinkURL" + std::to_string(n + 1));
    }
    return true;
}

}  // namespace corvane
