// What a site holds: firmware.inf by each of its readers and through a whole run, images, addresses.

#include <curl/curl.h>

#include "face/FirmwareDialog.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "image/ImageCheck.h"
#include "models/Flash.h"
#include "platform/linux/transfer/CurlSession.h"
#include "site/FirmwareListParser.h"
#include "site/SiteCheck.h"
#include "support/Program.h"
#include "text/Text.h"

namespace corvane::fuzz {
namespace {

using fakes::kImage;

/// Without blanks around them.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> all;
    std::string_view line;
    for (Lines lines(text); lines.next(line);) all.push_back(trimmed(line));
    return all;
}

}  // namespace

void addresses(std::string_view bytes) {
    const auto address = Address::parse(bytes);
    if (!address || !address->fault().empty()) return;
    require(Address::parse(address->link()) == address, "a link leads where it was made for");
    const auto url = curlUrl(*address);
    const auto isPrintable = [](char c) { return c > ' ' && c < 0x7F; };
    require(std::all_of(url.begin() + 6, url.end(), isPrintable), "a path is escaped");
    // The transfer library must see the same host, and the path as one that begins at the root.
    CURLU* parts = curl_url();
    if (curl_url_set(parts, CURLUPART_URL, url.c_str(), CURLU_PATH_AS_IS) == CURLUE_OK) {
        char* text = nullptr;
        require(curl_url_get(parts, CURLUPART_USER, &text, 0) != CURLUE_OK, "no account gets into the address");
        require(curl_url_get(parts, CURLUPART_QUERY, &text, 0) != CURLUE_OK, "nothing of a path is a query");
        require(curl_url_get(parts, CURLUPART_PATH, &text, CURLU_URLDECODE) == CURLUE_OK &&
                    text == (address->path.empty() ? "/" : "/" + address->path),
                "the path is the one that was meant");
        curl_free(text);
    }
    curl_url_cleanup(parts);
}

void inf_list(std::string_view bytes) {
    const auto records = FirmwareListParser().parse(bytes);
    for (const auto& record : records) {
        require(startsWithNoCase(record.section, "PGM"), "only images are listed");
        versionValue(record.version);
    }
    fakes::RecordingOperator prompts;
    for (const bool force : {false, true}) {
        FirmwareDialog dialog("COM1", "TARN-R200 V5.1R23", encodeRecords(records), force, false, "PGM_A");
        require(dialog.entries().size() <= records.size() + 1, "no image appears from nowhere");
        for (int i = 0; i < static_cast<int>(dialog.entries().size()); ++i) {
            dialog.select(i);
            dialog.details();
            dialog.verdict();
        }
        if (!dialog.entries().empty()) dialog.ok(prompts);
    }
}

/// A value is one line, whatever section and key are asked for.
void inf_profile(std::string_view bytes) {
    const std::string text(bytes);
    const Profile profile(text);
    std::vector<std::string> sections = {"PGM_A", "", "Corvane"}, keys = {"FILE", "Product", ""};
    for (const auto line : linesOf(bytes)) {
        auto& names = line.substr(0, 1) == "[" ? sections : keys;
        const auto name = line.substr(&names == &sections, line.find_first_of("=]") - (&names == &sections));
        if (names.size() < 10) names.emplace_back(name);
    }
    for (const auto& section : sections) {
        for (const auto& key : keys) {
            const auto value = profile.value(section, key);
            require(value.size() <= 1023 && value.find_first_of("\r\n") == std::string::npos, "a value is one line");
        }
    }
    const fakes::ScratchFolder folder;
    fakes::FakeDigest digest;
    SiteCheck check(digest, [](const std::string& path) {
        return path.size() % 2 ? std::optional<std::string>(kImage) : std::nullopt;
    });
    static_cast<void>(check.check(folder.file("firmware.inf", text)));
}

/// A whole update from such a site. Whatever it holds, nothing is written but where downloads belong.
void site(std::string_view bytes) {
    const std::string root = "ftp://u:p@h";
    fakes::AppBench bench;
    bench.plug();
    bench.reader.answers[root].content = "listing";
    bench.reader.answers[root + "/firmware/firmware.inf"].content = bytes;
    for (const auto line : linesOf(bytes)) {
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string file(trimmed(line.substr(equals + 1)));
        bench.reader.answers[root + (file.compare(0, 1, "/") == 0 ? "" : "/") + file].content = kImage;
    }
    fakes::Program program(bench);
    program.presenter.account("h", "u", "p");
    const auto report = program.start(true);
    require(report.end != RunEnd::failed, "nothing unforeseen happens");
    for (int i = 0; i < FirmwareInformation::kLinks; ++i) (void)program.presenter.openLink(i);
    for (const auto& name : bench.folder.folder.names()) {
        require(equalsNoCase(name, "firmware.inf") || equalsNoCase(name, "Download"), "a file lies where none belongs");
    }
    require(report.end != RunEnd::updated || bench.memoryFault().empty(), "updated is updated");
}

/// A sound image that was programmed is in the device; every other one does no harm to the program.
void hex(std::string_view bytes) {
    const std::string content(bytes);
    const auto report = checkImage(content);
    findingLines(report.findings, 3);
    const auto image = models::imageOf(content);
    require(!report.isSound() || image.unsoundLines.empty(), "what is sound has no record that a device refuses");

    models::Device device({.startsInBoot = true});
    fakes::SerialBench bench;
    bench.open(device);
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{bench.runtime, face, bench.port, cancel};
    for (const char* command : {"\r", "\x02X\r"}) {
        session.send(std::string(command));
        bench.runtime.Sleep(2000);
    }
    session.discardInput();
    fakes::FakeDigest digest;
    const bool isDone = HexProgrammer(session, face, digest).ISP_Program(Image("a.hex", content, digest));
    if (!isDone || !report.isSound() || device.log().erases == 0) return;
    require(models::comparison(device.flash(), image) == "memory equals image", "a sound image gets into the device");
}

}  // namespace corvane::fuzz
