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
#include "support/AppBench.h"
#include "text/Cp1252.h"
#include "text/Text.h"
#include "window/presenter/MainPresenter.h"

namespace corvane::fuzz {
namespace {

constexpr char kImage[] = "[INFO]\nPGM=TARN-R200\n:0400000001020304F2\n:0400100005060708D2\n:00000001FF\n";

class OkPrompts : public OperatorPrompts {
public:
    bool messageBox(Question, const std::string&) override { return true; }
    void chooseFirmware(FirmwareDialog&) override {}
};

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

}  // namespace

void addresses(std::string_view bytes) {
    const auto address = Address::parse(bytes);
    if (!address || !address->fault().empty()) return;
    require(Address::parse(address->link()) == address, "a link leads where it was made for");
    const auto url = curlUrl(*address);
    require(isPrintable(url.substr(url.find('/', 6))), "a path is escaped");
    // The transfer library must see the same host, and the path as one that begins at the root.
    CURLU* parts = curl_url();
    if (curl_url_set(parts, CURLUPART_URL, url.c_str(), CURLU_PATH_AS_IS) == CURLUE_OK) {
        char* user = nullptr;
        char* query = nullptr;
        require(curl_url_get(parts, CURLUPART_USER, &user, 0) != CURLUE_OK, "no account gets into the address");
        require(curl_url_get(parts, CURLUPART_QUERY, &query, 0) != CURLUE_OK, "nothing of a path is a query");
        char* path = nullptr;
        require(curl_url_get(parts, CURLUPART_PATH, &path, CURLU_URLDECODE) == CURLUE_OK, "the path can be decoded");
        require(path == (address->path.empty() ? "/" : "/" + address->path), "the path is the one that was meant");
        curl_free(path);
    }
    curl_url_cleanup(parts);
}

void inf_list(std::string_view bytes) {
    const auto records = FirmwareListParser().parse(bytes);
    for (const auto& record : records) {
        require(startsWithNoCase(record.section, "PGM"), "only images are listed");
        versionValue(record.version);
    }
    const auto list = encodeRecords(records);
    OkPrompts prompts;
    for (const bool force : {false, true}) {
        FirmwareDialog dialog("COM1", "TARN-R200 V5.1R23", list, force, false, "PGM_A");
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
    const fakes::ScratchFolder folder;
    const auto file = folder.file("firmware.inf", std::string(bytes));
    const Profile profile{std::string(bytes)};
    std::vector<std::string> sections = {"PGM_A", "pgm_a", "", "Corvane"}, keys = {"FILE", "Product", ""};
    std::string_view line;
    for (Lines lines(bytes); lines.next(line) && sections.size() < 12;) {
        line = trimmed(line);
        if (!line.empty() && line.front() == '[') sections.emplace_back(line.substr(1, line.find(']') - 1));
        keys.emplace_back(line.substr(0, line.find('=')));
    }
    keys.resize(std::min<std::size_t>(keys.size(), 8));
    for (const auto& section : sections) {
        for (const auto& key : keys) {
            const auto value = profile.value(section, key);
            require(value.size() <= 1023 && value.find_first_of("\r\n") == std::string::npos, "a value is one line");
        }
    }
    fakes::FakeDigest digest;
    SiteCheck check(digest, [](const std::string& path) {
        return path.size() % 2 ? std::optional<std::string>(kImage) : std::nullopt;
    });
    static_cast<void>(check.check(file));
}

/// A whole update from such a site. Whatever it holds, nothing is written but where downloads belong.
void site(std::string_view bytes) {
    fakes::AppBench bench;
    models::Device device{models::DeviceOptions()};
    bench.serial.plug(1, device);
    const std::string information(bytes);
    bench.reader.answers["ftp://u:p@h"].content = "listing";
    bench.reader.answers["ftp://u:p@h/firmware/firmware.inf"].content = information;
    std::string_view line;
    for (Lines lines(information); lines.next(line);) {
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const auto file = std::string(trimmed(line.substr(equals + 1)));
        bench.reader.answers["ftp://u:p@h" + (file.compare(0, 1, "/") == 0 ? "" : std::string("/")) + file].content =
            kImage;
    }
    Updater updater(bench.platform(), bench.face.face());
    MainPresenter presenter(updater);
    presenter.load();
    presenter.account("h", "u", "p");
    const auto report = presenter.start(true);
    require(report.end != RunEnd::failed, "nothing unforeseen happens");
    for (int i = 0; i < FirmwareInformation::kLinks; ++i) presenter.linkAddress(i);
    updater.shutDown();
    for (const auto& name : bench.folder.folder.names()) {
        require(equalsNoCase(name, "firmware.inf") || equalsNoCase(name, "Download"), "a file lies where none belongs");
    }
    if (report.end == RunEnd::updated) {
        require(models::comparison(device.flash(), models::imageOf(kImage)) == "memory equals image",
                "updated is updated");
    }
}

/// A sound image that was programmed is in the device; every other one does no harm to the program.
void hex(std::string_view bytes) {
    const std::string content(bytes);
    const auto report = checkImage(content);
    findingLines(report.findings, 3);
    for (const auto& segment : report.segments) segmentText(segment);
    const auto image = models::imageOf(content);
    require(!report.isSound() || image.unsoundLines.empty(), "what is sound has no record that a device refuses");

    models::DeviceOptions options;
    options.startsInBoot = true;
    options.baud = 921600;
    models::Device device(options);
    fakes::SerialBench bench;
    bench.open(device, "921600,N,8,1");
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{bench.runtime, face, bench.port, cancel};
    fakes::FakeDigest digest;
    HexProgrammer programmer(session, face, digest);
    session.send(std::string("\r"));
    const fakes::ScratchFolder folder;
    bench.runtime.Sleep(200);
    session.send(std::string("\x02X\r"));
    bench.runtime.Sleep(200);
    session.discardInput();
    const bool isDone = programmer.ISP_Program(folder.file("a.hex", content));
    if (!isDone || !report.isSound() || device.log().erases == 0) return;
    require(models::comparison(device.flash(), image) == "memory equals image", "a sound image gets into the device");
}

}  // namespace corvane::fuzz
