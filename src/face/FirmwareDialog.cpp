#include "face/FirmwareDialog.h"

#include <algorithm>
#include <utility>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// A Windows-1252 text without the difference between small and capital letters.
std::string folded(std::string_view text) {
    auto result = upperCase(text);
    for (char& c : result) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0xE0 && byte != 0xF7 && byte != 0xFF) c = static_cast<char>(byte - 0x20);
    }
    return result;
}

}  // namespace

double versionValue(std::string_view text) {
    const auto start = findNoCase(text, "V");
    if (start == std::string_view::npos) return 0;
    text.remove_prefix(start + 1);
    text = text.substr(0, text.find_first_of(" ("));
    const auto point = text.find('.');
    const auto letter = findNoCase(text, "R");
    const auto minor = point == std::string_view::npos || (letter != std::string_view::npos && letter < point)
                           ? std::string_view()
                           : text.substr(point + 1, letter == std::string_view::npos ? letter : letter - point - 1);
    const auto revision = letter == std::string_view::npos ? std::string_view() : text.substr(letter + 1);
    return leadingNumber(text.substr(0, point)) + leadingNumber(minor) / 100 + leadingNumber(revision) / 100000;
}

std::string versionStep(std::string_view deviceVersion, std::string_view imageVersion) {
    const double from = versionValue(deviceVersion), to = versionValue(imageVersion);
    if (from == 0 || to == 0) return {};
    const auto token = [](std::string_view text) {
        text.remove_prefix(findNoCase(text, "V"));
        return std::string(text.substr(0, text.find_first_of(" (")));
    };
    if (from == to) return token(imageVersion) + " once more, the version that the device has";
    return "from " + token(deviceVersion) + " to " + token(imageVersion) +
           (from < to ? ", a newer version" : ", an OLDER version");
}

FirmwareDialog::FirmwareDialog(std::string port, std::string deviceVersion, const std::string& szROMList, bool isForced,
                               bool isFirmwareNotFound, const std::string& lastSection)
    : port_(std::move(port)), deviceVersion_(std::move(deviceVersion)), isFirmwareNotFound_(isFirmwareNotFound) {
    for (auto& record : decodeRecords(szROMList)) {
        const bool isForDevice = containsNoCase(deviceVersion_, record.product);
        // A device in its boot loader does not say what it is, so everything is offered to it.
        if (!isForDevice && !isForced && !isFirmwareNotFound) continue;
        auto text = (isForDevice ? "" : "*") + record.section + " - " + record.product;
        entries_.push_back({std::move(text), std::move(record)});
    }
    find({});
    selected_ = preselected(lastSection);
}

int FirmwareDialog::preselected(const std::string& lastSection) const {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!lastSection.empty() && entries_[i].record.section == lastSection) return static_cast<int>(i);
    }
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!entries_[i].isMarked()) return static_cast<int>(i);
    }
    return entries_.size() == 1 ? 0 : -1;
}

void FirmwareDialog::select(int index) {
    selected_ = index >= 0 && index < static_cast<int>(entries_.size()) ? index : -1;
}

void FirmwareDialog::find(std::string_view text) {
    const auto wanted = folded(text);
    found_.clear();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (folded(entries_[i].text).find(wanted) != std::string::npos) found_.push_back(static_cast<int>(i));
    }
    if (found_.size() == 1)
        selected_ = found_.front();
    else if (selectedPlace() < 0)
        selected_ = -1;
}

int FirmwareDialog::selectedPlace() const {
    const auto at = std::lower_bound(found_.begin(), found_.end(), selected_);
    return at != found_.end() && *at == selected_ ? static_cast<int>(at - found_.begin()) : -1;
}

std::string FirmwareDialog::header() const {
    return "[Local Site]\r\nComm Port : " + port_ + "\r\nDevice F/W: " + deviceVersion_ + "\r\n";
}

std::string FirmwareDialog::details() const {
    if (selected_ < 0) return {};
    const auto& record = current();
    return "[FTP Site]\r\nROM Number: " + record.section + "\r\nProduct   : " + record.product +
           "\r\nVersion   : " + record.version + "\r\n\r\n[Update Information]\r\n" +
           replaceAll(record.description, "\\n", "\r\n") + "\r\n";
}

FirmwareDialog::Verdict FirmwareDialog::verdict() const {
    if (isFirmwareNotFound_) return {"Firmware Not Found", true};
    if (selected_ < 0) return {};
    if (entries_[static_cast<std::size_t>(selected_)].isMarked()) return {"Different Firmware", true};
    const bool isOlder = versionValue(deviceVersion_) < versionValue(current().version);
    return {isOlder ? "Firmware version is out of date" : "Firmware version is latest version", false};
}

std::string FirmwareDialog::step() const {
    return selected_ < 0 ? std::string() : versionStep(deviceVersion_, current().version);
}

void FirmwareDialog::ok(OperatorPrompts& prompts) {
    if (selected_ < 0 || chosen_) return;
    chosen_ = prompts.messageBox(Question::updateFirmware,
                                 "Do you want to UPDATE firmware to \"" + current().section +
                                     "\"?\r\nWarning: firmware update incorrectly will damage the unit!");
}

std::string FirmwareDialog::result() const { return current().section + " " + current().version; }

}  // namespace corvane
