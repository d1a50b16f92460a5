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

/// "V5.1R23" of "TARN-R200 V5.1R23 (a)".
std::string versionToken(std::string_view text) {
    const auto start = findNoCase(text, "V");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    return std::string(text.substr(0, text.find_first_of(" (")));
}

}  // namespace

double versionValue(std::string_view text) {
    const auto token = versionToken(text);
    if (token.empty()) return 0;
    text = std::string_view(token).substr(1);
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
    if (from == to) return versionToken(imageVersion) + " once more, the version that the device has";
    return "from " + versionToken(deviceVersion) + " to " + versionToken(imageVersion) +
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
    return "[Local Site]\r\nComm Port : " + onOneLine(port_) + "\r\nDevice F/W: " + onOneLine(deviceVersion_) + "\r\n";
}

std::string FirmwareDialog::details() const {
    if (selected_ < 0) return {};
    const auto& record = current();
    return "[FTP Site]\r\nROM Number: " + record.section + "\r\nProduct   : " + record.product +
           "\r\nVersion   : " + record.version + "\r\n\r\n[Update Information]\r\n" +
           replaceAll(record.description, "\\n", "\r\n") + "\r\n" +
           (vouchingInFull_.empty() ? std::string() : "\r\n" + vouchingInFull_ + "\r\n");
}

FirmwareDialog::Verdict FirmwareDialog::verdict() const {
    if (isFirmwareNotFound_) return {"Firmware Not Found", true};
    if (selected_ < 0) return {};
    if (entry().isMarked()) return {"Different Firmware", true};
    const bool isOlder = versionValue(deviceVersion_) < versionValue(current().version);
    return {isOlder ? "Firmware version is out of date" : "Firmware version is latest version", false};
}

std::string FirmwareDialog::step() const {
    return selected_ < 0 ? std::string() : versionStep(deviceVersion_, current().version);
}

FirmwareDialog::Comparison FirmwareDialog::comparison() const {
    using Kind = Comparison::Kind;
    if (selected_ < 0) return {};
    const double from = versionValue(deviceVersion_), to = versionValue(current().version);
    Comparison result{Kind::unknown, from == 0 ? "?" : versionToken(deviceVersion_),
                      to == 0 ? "?" : versionToken(current().version), "not to be compared"};
    if (!isFirmwareNotFound_ && entry().isMarked()) {
        result.kind = Kind::otherProduct;
        result.words = "made for another product";
    } else if (from != 0 && to != 0) {
        result.kind = from < to ? Kind::newer : from == to ? Kind::same : Kind::older;
        result.words = from < to ? "a newer version" : from == to ? "the version that it has" : "an OLDER version";
    }
    return result;
}

std::string FirmwareDialog::madeFor() const {
    if (selected_ < 0) return {};
    return trimmed(current().product).empty() ? "unknown" : current().product;
}

std::vector<std::string> FirmwareDialog::cautions() const {
    if (selected_ < 0) return {};
    std::vector<std::string> sentences;
    const bool isUnknown = trimmed(current().product).empty();
    if (isUnknown) {
        sentences.emplace_back("The image does not say what it is made for.");
    } else if (isFirmwareNotFound_) {
        sentences.push_back("The image is made for " + current().product + ".");
    } else if (entry().isMarked()) {
        sentences.push_back("The image is made for ANOTHER PRODUCT: " + current().product + ".");
    }
    if (isFirmwareNotFound_) sentences.emplace_back("The device sits in its boot loader and does not say what it is.");
    if (const auto compared = comparison(); compared.kind == Comparison::Kind::older)
        sentences.push_back("The image is OLDER than what the device runs: " + compared.to + " after " + compared.from +
                            ".");
    return sentences;
}

void FirmwareDialog::ok(OperatorPrompts& prompts) {
    if (selected_ < 0 || chosen_) return;
    const auto unusual = cautions();
    auto text = "Do you want to UPDATE firmware to \"" + current().section +
                "\"?\r\nWarning: firmware update incorrectly will damage the unit!";
    if (!unusual.empty()) text += "\r\n\r\n" + joined(unusual, "\r\n");
    chosen_ = prompts.messageBox(unusual.empty() ? Question::updateFirmware : Question::unusualUpdate, text);
}

std::string FirmwareDialog::result() const { return current().section + " " + current().version; }

}  // namespace corvane
