#include <filesystem>

#include "console/Console.h"
#include "console/TerminalText.h"
#include "image/Image.h"
#include "platform/Address.h"
#include "platform/files/Files.h"
#include "settings/StoredSettings.h"
#include "site/SiteCheck.h"
#include "site/SiteDigests.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr int kFoundSomething = 1, kCancelled = 1, kNoSite = 4;
constexpr char kInformation[] = "/firmware/firmware.inf";

std::optional<std::string> contentOf(const std::string& path) {
    try {
        return readFile(path);
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

std::string jsonOf(const ImageReport& report) {
    std::vector<std::string> findings, segments;
    for (const auto& finding : report.findings) {
        findings.push_back("{\"line\":" + std::to_string(finding.line) + ",\"text\":" + jsonString(finding.text) + "}");
    }
    for (const auto& segment : report.segments) {
        segments.push_back("{\"first\":" + std::to_string(segment.first) +
                           ",\"bytes\":" + std::to_string(segment.bytes) + "}");
    }
    return "{\"records\":" + std::to_string(report.records) + ",\"bytes\":" + std::to_string(report.bytes) +
           ",\"segments\":[" + joined(segments, ",") + "],\"findings\":[" + joined(findings, ",") + "]}\n";
}

std::string textOf(const ImageReport& report) {
    constexpr std::size_t kMostFindings = 100;
    std::string text;
    for (const auto& segment : report.segments) text += segmentText(segment) + "\n";
    text += std::to_string(report.records) + " records, " + std::to_string(report.bytes) + " bytes of data\n";
    for (const auto& line : findingLines(report.findings, kMostFindings)) text += line + "\n";
    return text;
}

std::string jsonOf(const SiteReport& report) {
    std::vector<std::string> offered, findings;
    for (const auto& record : report.offered) {
        offered.push_back("{\"section\":" + jsonString(toUtf8(record.section)) + ",\"product\":" +
                          jsonString(toUtf8(record.product)) + ",\"version\":" + jsonString(toUtf8(record.version)) +
                          ",\"file\":" + jsonString(toUtf8(record.file)) + "}");
    }
    for (const auto& finding : report.findings) {
        findings.push_back("{\"section\":" + jsonString(finding.section) + ",\"text\":" + jsonString(finding.text) +
                           "}");
    }
    return "{\"offered\":[" + joined(offered, ",") + "],\"findings\":[" + joined(findings, ",") + "]" +
           (report.signer.empty() ? "" : ",\"signer\":" + jsonString(report.signer)) + "}\n";
}

std::string textOf(const SiteReport& report) {
    std::string text;
    for (const auto& record : report.offered) {
        text +=
            "offered: " + toUtf8(record.section + " - " + record.product + ", " + record.version + ", " + record.file) +
            "\n";
    }
    if (!report.signer.empty()) text += report.signer + "\n";
    for (const auto& finding : report.findings) {
        text += (finding.section.empty() ? std::string("firmware.inf") : "[" + finding.section + "]") + " " +
                finding.text + "\n";
    }
    return text;
}

/// The folder for what is fetched from a site; gone with the object.
class FetchFolder {
public:
    explicit FetchFolder(std::filesystem::path path) : path_(std::move(path)) {}
    ~FetchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    FetchFolder(const FetchFolder&) = delete;
    FetchFolder& operator=(const FetchFolder&) = delete;

    std::string file() const { return (path_ / "fetched").string(); }
    std::string information() const { return (path_ / "firmware.inf").string(); }

private:
    std::filesystem::path path_;
};

int finish(Console& console, const Arguments& arguments, const SiteReport& report) {
    writeHarmless(console.out, arguments.json ? jsonOf(report) : textOf(report));
    return report.findings.empty() ? 0 : kFoundSomething;
}

/// Puts the images' digests into firmware.inf, whole or not at all.
bool writeDigests(Console& console, const std::string& file, const SiteCheck::Fetch& fetch) {
    const auto text = withDigests(readFile(file), [&](const std::string& path) {
        const auto content = fetch(path);
        return content ? console.platform.digest.sha256(*content) : std::string();
    });
    const auto problem = console.platform.files.replace(file, text, FileStore::Named::byOperator);
    if (!problem.empty()) console.err.write("corvane-cli: " + file + " cannot be written: " + problem + ".\n");
    return problem.empty();
}

/// A site that lies in a folder. A path like "/../x" leads out of it, so what it names is not on the site.
int checkFolder(Console& console, const Arguments& arguments) {
    const std::filesystem::path root = arguments.subject;
    const auto place = [&root](const std::string& path) {
        return (root / std::filesystem::path(path).relative_path().lexically_normal()).string();
    };
    const auto fetch = [&](const std::string& path) -> std::optional<std::string> {
        const auto inside = std::filesystem::path(path).relative_path().lexically_normal();
        if (!inside.empty() && *inside.begin() == "..") return std::nullopt;
        return contentOf(place(path));
    };
    if (!FileExists(place(kInformation))) {
        console.err.write("corvane-cli: " + place(kInformation) + " is not there.\n");
        return kNoSite;
    }
    if (arguments.writeDigests && !writeDigests(console, place(kInformation), fetch)) return kNoSite;
    const auto& platform = console.platform;
    const ListTrust trust(platform.signatures, platform.keys, platform.folder, platform.files);
    for (const auto& problem : trust.problems()) console.err.write("corvane-cli: " + problem + "\n");
    SiteCheck check(platform.digest, fetch);
    check.judgeBy(trust);
    return finish(console, arguments, check.check(place(kInformation)));
}

/// What stands before the last "@" of an address as it was typed; nothing without one.
std::optional<std::string> accountIn(const std::string& typed) {
    const auto start = typed.find("://") + 3, at = typed.rfind('@');
    return at == std::string::npos || at < start ? std::nullopt : std::optional(typed.substr(start, at - start));
}

/// The site is what lies below the address's path. An account that is not given comes from elsewhere.
int checkServer(Console& console, const Arguments& arguments, const Address& address) {
    CommandScope scope(console, arguments, console.err, false);
    auto& choices = scope.updater.choices;
    choices.offLine = false;
    choices.server = address.server();
    if (!address.user.empty() || accountIn(arguments.subject) == "") choices.userName = address.user;
    const auto root = address.path.substr(0, address.path.find_last_not_of('/') + 1);
    auto& site = scope.updater.site();
    bool cancelled = false;
    console.interrupt = [&] {
        cancelled = true;
        site.cancel();
    };
    // Nobody else can look into it or have made it before.
    const auto place = console.platform.folder.privateFolder();
    if (place.empty()) {
        scope.face.say("No folder for what is fetched can be made in " + console.platform.folder.dataPath() + ".");
        return scope.end(kNoSite);
    }
    const FetchFolder folder(place);
    const auto fetch = [&](const std::string& path) -> std::optional<std::string> {
        if (cancelled || !site.FTP_Download(root + path, folder.file())) return std::nullopt;
        return contentOf(folder.file());
    };
    if (!site.login() || cancelled || !site.FTP_Download(root + kInformation, folder.information())) {
        if (cancelled) return scope.end(kCancelled);
        scope.face.say("The site could not be read: " + site.failure().words + ".");
        return scope.end(kNoSite);
    }
    for (const auto& text : site.takeRemarks()) scope.face.say(text);
    SiteCheck check(console.platform.digest, fetch);
    check.judgeBy(scope.updater.trust());
    const auto report = check.check(folder.information());
    if (cancelled) return scope.end(kCancelled);  // what could not be fetched any more is no finding
    return scope.end(finish(console, arguments, report));
}

}  // namespace

int checkCommand(Console& console, const Arguments& arguments) {
    Choices choices;
    StoredSettings(console.platform.settings).load(choices);
    const auto loaded = loadImage(arguments.subject, console.platform.digest,
                                  {.mostBytes = choices.mostImageBytes, .source = ImageSource::fileOrPipe});
    if (!loaded.image) {
        console.err.write("corvane-cli: " + arguments.subject + " " + loaded.problem.words + ".\n");
        return kFoundSomething;
    }
    const auto& report = loaded.image->report();
    console.out.write(arguments.json ? jsonOf(report) : textOf(report));
    return report.isSound() ? 0 : kFoundSomething;
}

int checkSiteCommand(Console& console, const Arguments& arguments) {
    constexpr int kWrongUsage = 2;
    const auto address = Address::parse(arguments.subject);
    const auto account = address ? accountIn(arguments.subject) : std::nullopt;
    if (account && account->find(':') != std::string::npos) {
        console.err.write(
            "corvane-cli: an address must not hold the password; set CORVANE_FTP_PASSWORD. An @ in the path is %40.\n");
        return kWrongUsage;
    }
    if (address && arguments.writeDigests) {
        console.err.write("corvane-cli: --write-sha256 goes with a folder.\n");
        return kWrongUsage;
    }
    return address ? checkServer(console, arguments, *address) : checkFolder(console, arguments);
}

}  // namespace corvane
