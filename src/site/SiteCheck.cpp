#include "site/SiteCheck.h"

#include <algorithm>
#include <map>
#include <set>

#include "face/FirmwareDialog.h"
#include "image/Image.h"
#include "platform/ProgramInfo.h"
#include "platform/files/Files.h"
#include "site/FirmwareInformation.h"
#include "site/FirmwareListParser.h"
#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kMostImageFindings = 5;

std::string keyNames(unsigned keys) {
    std::vector<std::string> names;
    if (keys & FirmwareListParser::kProduct) names.emplace_back("PRODUCT");
    if (keys & FirmwareListParser::kVersion) names.emplace_back("VERSION");
    if (keys & FirmwareListParser::kDesc) names.emplace_back("DESC");
    if (keys & FirmwareListParser::kFile) names.emplace_back("FILE");
    return joined(names, ", ");
}

std::string quoted(const std::string& text1252) { return "\"" + toUtf8(text1252) + "\""; }

std::string withSlash(const std::string& path) { return path.compare(0, 1, "/") == 0 ? path : "/" + path; }

}  // namespace

SiteReport SiteCheck::check(const std::string& informationFile) {
    report_ = {};
    const auto content = readFile(informationFile);
    const Profile profile(content);
    profile_ = &profile;
    if (content.find('\0') != std::string::npos) find("", "holds NUL bytes: it is no text file");
    checkKeys(content);
    report_.offered = FirmwareListParser().parse(content);
    checkHeads(content);
    if (report_.offered.empty()) find("", "offers no image at all");
    for (const auto& record : report_.offered) checkRecord(record);
    checkVersions();
    checkProgram();
    checkSignature(content);
    profile_ = nullptr;
    return std::move(report_);
}

void SiteCheck::checkSignature(const std::string& content) {
    if (!trust_ || !trust_->isAsked()) return;
    const auto judgement = trust_->judge(content, fetch_("/firmware/" + std::string(kSignatureName)).value_or(""));
    if (!judgement.voucher) return find("", "is not to be believed: " + judgement.fault);
    report_.signer = signedText(*judgement.voucher);
    for (const auto& record : report_.offered) {
        if (value(record.section, "SHA256").empty())
            find(record.section, "is not offered to who knows a key: the signed list gives no SHA256 for it");
    }
    if (value("Corvane", "Version") > programVersion() && value("Corvane", "SHA256").empty())
        find("Corvane", "is not offered to who knows a key: the signed list gives no SHA256 for it");
}

void SiteCheck::find(const std::string& section, const std::string& text) {
    report_.findings.push_back({toUtf8(section), text});
}

std::string SiteCheck::value(const std::string& section, const std::string& key) {
    return profile_->value(section, key);
}

bool SiteCheck::exists(const std::string& path) { return fetch_(withSlash(path)).has_value(); }

/// Sections that are dropped, and keys that move on into the next one.
void SiteCheck::checkKeys(std::string_view content) {
    FirmwareListParser parser;
    parser.onSection = [this](const std::string& section, unsigned seen, unsigned carried) {
        const unsigned missing = FirmwareListParser::kAllKeys & ~seen;
        if (missing) find(section, "is not offered: " + keyNames(missing) + " missing");
        if (carried) find(section, "takes " + keyNames(carried) + " from an incomplete section before it");
    };
    parser.parse(content);
}

/// Section heads that only one of the two readers recognises, and names that occur twice.
void SiteCheck::checkHeads(std::string_view content) {
    std::set<std::string> seen;
    std::string_view line;
    for (Lines lines(content); lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.front() != '[') continue;
        const auto end = line.find(']');
        const std::string name(trimmed(line.substr(1, end == std::string_view::npos ? end : end - 1)));
        if (!startsWithNoCase(name, "PGM")) continue;
        if (line.back() != ']')
            find(name, "is not offered: its head " + quoted(std::string(line)) + " does not end with ]");
        if (!seen.insert(upperCase(name)).second) find(name, "occurs twice: the details come from the first one");
    }
}

void SiteCheck::checkRecord(const FirmwareRecord& record) {
    const auto& section = record.section;
    if (section.find(' ') != std::string::npos) {
        return find(section, "has a blank in its name: choosing it ends with \"No new version in server!!\"");
    }
    compare(section, "Product", record.product);
    compare(section, "Version", record.version);
    compare(section, "Desc", record.description);
    compare(section, "File", record.file);
    if (value(section, "Product").empty()) {
        find(section, "has no product: choosing it ends with \"No new version in server!!\"");
    }
    if (versionValue(record.version) == 0)
        find(section, "has the version " + quoted(record.version) + ", which counts as 0");
    checkRate(section);
    checkLinks(section);
    checkImageFile(section);
}

/// What the list shows must be what the chosen section says.
void SiteCheck::compare(const std::string& section, const std::string& key, const std::string& listed) {
    const auto chosen = value(section, key);
    if (chosen == listed) return;
    find(section, upperCase(key) + " is " + quoted(listed.substr(0, 80)) + " in the list and " +
                      quoted(chosen.substr(0, 80)) + " when the image is chosen");
}

void SiteCheck::checkRate(const std::string& section) {
    const auto rate = value(section, "ISP_BAUDRATE");
    if (rate.empty()) return;
    if (!isNumeric(rate)) return find(section, "ISP_BAUDRATE is " + quoted(rate) + ", which is no number");
    const double number = leadingNumber(rate);
    if (number < 0 || number > 4000000 || number != roundToEven(number)) {
        find(section, "ISP_BAUDRATE is " + quoted(rate) + ", which is no baud rate");
    }
}

void SiteCheck::checkLinks(const std::string& section) {
    for (int n = 1; n <= FirmwareInformation::kLinks; ++n) {
        const auto number = std::to_string(n);
        const auto title = value(section, "LinkDOC" + number), target = value(section, "LinkURL" + number);
        if (title.empty() != target.empty())
            find(section, "has only one of LinkDOC" + number + " and LinkURL" + number);
        if (!target.empty() && !exists(target))
            find(section, "LinkURL" + number + " " + quoted(target) + " is not on the site");
    }
}

void SiteCheck::checkImageFile(const std::string& section) {
    const auto file = value(section, "File");
    if (!isSafeFileName(lastPart(file))) {
        return find(section, "FILE " + quoted(file) + " gives no usable file name");
    }
    const auto content = fetch_(withSlash(file));
    if (!content) return find(section, "FILE " + quoted(file) + " is not on the site");
    if (content->empty()) return find(section, "FILE " + quoted(file) + " is empty, which counts as a failed download");
    const Image image(file, *content, digest_);
    checkDigest(section, image.sha256());
    for (const auto& line : findingLines(image.report().findings, kMostImageFindings)) {
        find(section, "FILE " + quoted(file) + ": " + line);
    }
}

void SiteCheck::checkDigest(const std::string& section, const std::string& digest) {
    const auto announced = lowerCase(value(section, "SHA256"));
    if (!announced.empty() && announced != digest)
        find(section, "SHA256 does not match FILE, whose digest is " + digest);
}

/// Two images of one product whose versions sort one way as numbers and the other way as texts.
void SiteCheck::checkVersions() {
    std::map<std::string, std::vector<const FirmwareRecord*>> products;
    for (const auto& record : report_.offered) products[upperCase(record.product)].push_back(&record);
    for (auto& [product, records] : products) {
        std::stable_sort(records.begin(), records.end(), [](const auto* a, const auto* b) {
            return versionValue(a->version) < versionValue(b->version);
        });
        for (std::size_t i = 1; i < records.size(); ++i) {
            const auto &older = *records[i - 1], &newer = *records[i];
            const bool sameNumber = versionValue(older.version) == versionValue(newer.version);
            if (sameNumber ? older.version == newer.version : older.version < newer.version) continue;
            find(newer.section,
                 "version " + quoted(newer.version) +
                     (sameNumber ? " counts as the same as " : " is newer as a number, but not as a text, than ") +
                     quoted(older.version) + " of " + toUtf8(older.section));
        }
    }
}

/// The program's own entry is compared as a text.
void SiteCheck::checkProgram() {
    const auto version = value("Corvane", "Version");
    if (version.empty()) return;
    const bool isNewerText = version > programVersion();
    const bool isNewerNumber = versionValue(version) > versionValue(programVersion());
    if (isNewerText != isNewerNumber) {
        find("Corvane", "Version " + quoted(version) + (isNewerText ? " is offered to " : " is not offered to ") +
                            programVersion() + ", although it is " + (isNewerNumber ? "newer" : "no newer") +
                            " as a number");
    }
    auto file = value("Corvane", "File");
    if (file.empty()) file = "firmware/utility/corvane.exe";
    if (isNewerText && !exists(file)) find("Corvane", "File " + quoted(file) + " is not on the site");
}

}  // namespace corvane
