#include "site/FirmwareSelection.h"

#include <set>

#include "platform/files/Files.h"
#include "settings/StoredSettings.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// The name that a record's file has in the Download folder.
std::string localName(const FirmwareRecord& record) {
    const auto& file = record.file;
    return toUtf8(lastPart(file, file.find('/') == std::string::npos ? '\\' : '/'));
}

}  // namespace

std::vector<FirmwareRecord> FirmwareSelection::list() const {
    if (choices_.isLocalFile()) {
        const auto& info = choices_.image.info();
        return {{info.program, info.program, info.version, info.description(), " "}};
    }
    const auto* offer = inf_.information();
    if (!offer) return {};
    auto records = offer->records();
    if (offer->voucher()) std::erase_if(records, [&](const auto& record) { return !offer->hasDigest(record.section); });
    if (choices_.offLine) {
        // The folder is looked through once, not for each of thousands of records.
        std::set<std::string> downloaded;
        for (const auto& name : filesIn(folder_.resolve("\\Download"))) {
            if (isSafeFileName(name)) downloaded.insert(upperCase(name));
        }
        std::erase_if(records, [&](const auto& record) { return !downloaded.count(upperCase(localName(record))); });
    }
    return records;
}

std::string FirmwareSelection::withheld() const {
    const auto* offer = choices_.isLocalFile() ? nullptr : inf_.information();
    if (!offer || !offer->voucher()) return {};
    std::vector<std::string> sections;
    for (const auto& record : offer->records()) {
        if (!offer->hasDigest(record.section)) sections.push_back(onOneLine(toUtf8(record.section)));
    }
    return sections.empty()
               ? std::string()
               : "Not offered, since the signed list gives no SHA256 for it: " + joined(sections, ", ") + ".";
}

Vouching FirmwareSelection::vouching() const {
    const auto* offer = inf_.information();
    if (!inf_.trust()) return {};
    if (!choices_.isLocalFile()) {
        if (!offer || !offer->voucher()) return {};
        return {offer->voucher()->name, "Signed by " + offer->voucher()->name + ".", signedText(*offer->voucher())};
    }
    if (!offer || !offer->voucher()) {
        const auto why = inf_.distrust().empty() ? std::string("there is none") : inf_.distrust();
        const auto text = "Whether the local file is signed cannot be looked up in firmware.inf: " + why + ".";
        return {{}, text, text};
    }
    const auto name = onOneLine(toUtf8(offer->nameOf(choices_.image.sha256())));
    const auto& signer = *offer->voucher();
    if (name.empty()) {
        const auto text = "The local file is not in the list that " + signer.name + " signed.";
        return {{}, text, text};
    }
    const auto text = "The local file is " + name + " as signed by " + signer.name + ".";
    return {signer.name, text, text + " " + signedText(signer)};
}

Image FirmwareSelection::localImage(const FirmwareRecord& record, Digest& digest) const {
    if (choices_.isLocalFile()) return choices_.image;
    const auto name = localName(record);
    const auto path = isSafeFileName(name) ? folder_.resolve("\\Download\\" + name) : std::string();
    if (!FileExists(path)) return {};
    return loadImage(path, digest, {.mostBytes = choices_.mostImageBytes}).image.value_or(Image());
}

SelectionEnd FirmwareSelection::SelectFirmware(std::string& szFileVersion, const std::string& szPort,
                                               const std::string& szDeviceVersion, bool force, bool inIsp) {
    const auto records = list();
    if (records.empty()) {
        log_.ShowInfo("Firmware file(s) not found !!!\r\n");
        return SelectionEnd::nothingListed;
    }
    switch (ShowQuery(szFileVersion, szPort, szDeviceVersion, encodeRecords(records), force, inIsp)) {
        case 0:
            return SelectionEnd::chosen;
        case 1:
            log_.ShowInfo("Cancel Update!!!\r\n");
            return SelectionEnd::cancelled;
        default:
            log_.ShowInfo("Firmware not found!!!\r\n");
            return SelectionEnd::nothingSuitable;
    }
}

std::int32_t FirmwareSelection::ShowQuery(std::string& szFileVersion, const std::string& szPort,
                                          const std::string& szDeviceVersion, const std::string& szROMList,
                                          bool bIsForceISPMode, bool bIsFirmwareNotFound) {
    const auto last = StoredSettings(settings_).lastSection();
    FirmwareDialog dialog(szPort, szDeviceVersion, szROMList, bIsForceISPMode, bIsFirmwareNotFound, last);
    if (dialog.entries().empty()) return 2;
    const auto vouched = vouching();
    dialog.vouching(fromUtf8(vouched.brief), fromUtf8(vouched.details));
    prompts_.chooseFirmware(dialog);
    if (remembers_ && dialog.selected() >= 0) {
        const auto& entry = dialog.entries()[static_cast<std::size_t>(dialog.selected())];
        StoredSettings(settings_).saveLastSection(entry.record.section);
    }
    if (!dialog.isChosen()) return 1;
    szFileVersion = dialog.result();
    return 0;
}

}  // namespace corvane
