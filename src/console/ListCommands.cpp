#include <map>

#include "console/Console.h"
#include "console/TerminalText.h"
#include "text/Cp1252.h"
#include "text/Json.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string jsonPair(const std::string& key, const std::string& text1252) {
    return jsonString(key) + ":" + jsonString(toUtf8(text1252));
}

/// {"key":[{...},{...}]} on one line, and who has signed them.
std::string jsonList(const std::string& key, const std::vector<std::string>& objects, const std::string& signer = {}) {
    const auto who = signer.empty() ? std::string() : ",\"signedBy\":" + jsonString(signer);
    return "{" + jsonString(key) + ":[" + joined(objects, ",") + "]" + who + "}\n";
}

struct PortRow {
    std::string name, device, description;
    bool isScanned = false;
};

std::vector<PortRow> portRows(Updater& updater) {
    std::vector<PortRow> rows;
    const auto map = updater.platform().ports.list();
    for (clsIMScomm* port : std::initializer_list<clsIMScomm*>{&updater.serialPort(), &updater.hidPort()}) {
        const auto count = port->NumberOfCommPorts();
        for (std::int32_t i = 0; i < count; ++i) {
            PortRow row{port->EnumCommPort(i), {}, port->EnumCommPortEx(i), false};
            row.isScanned = port->IsMyCommPort(row.name);
            for (const auto& entry : map.value_or(std::vector<PortMapEntry>())) {
                if (entry.port == row.name) row.device = entry.device;
            }
            rows.push_back(row);
        }
    }
    return rows;
}

/// Why ports cannot be opened, by their names; nothing for those that can.
std::map<std::string, std::string> problemsOf(PortList& list) {
    std::map<std::string, std::string> problems;
    list.look();
    for (const auto& row : list.rows()) {
        if (!row.problem.empty()) problems[row.name] = row.problem;
    }
    return problems;
}

}  // namespace

int portsCommand(Console& console, const Arguments& arguments) {
    CommandScope scope(console, arguments, console.err, false);
    std::vector<std::string> objects;
    const auto rows = portRows(scope.updater);
    const auto problems = problemsOf(scope.updater.portList());
    for (const auto& row : rows) {
        const auto problem = problems.find(toUtf8(row.name));
        objects.push_back("{" + jsonPair("name", row.name) + "," + jsonString("device") + ":" + jsonString(row.device) +
                          "," + jsonPair("description", row.description) +
                          ",\"scanned\":" + (row.isScanned ? "true" : "false") + "," + jsonString("problem") + ":" +
                          jsonString(problem == problems.end() ? "" : problem->second) + "}");
        if (arguments.json) continue;
        auto line = withoutControls(row.name) + "\t" + withoutControls(row.device) + "\t" +
                    withoutControls(toUtf8(row.description));
        if (!row.isScanned) line += "not scanned";
        writeHarmless(console.out, line + "\n");
    }
    if (arguments.json) console.out.write(jsonList("ports", objects));
    if (rows.empty()) scope.face.say("There is no port.");
    for (const auto& [name, problem] : problems) scope.face.say(name + ": " + problem + ".");
    if (const auto& problem = scope.updater.vellIO().libraryProblem(); !problem.empty())
        scope.face.say("There are no HID readers: " + problem);
    return scope.end(0);
}

int scanCommand(Console& console, const Arguments& arguments) {
    constexpr int kNoDevice = 3, kCancelled = 1;
    CommandScope scope(console, arguments, console.err, false);
    auto& session = scope.updater.session();
    console.interrupt = [&scope] { scope.updater.cancelDialogue(); };
    bool inIsp = false;
    const auto version = scope.updater.scanner().DeviceScan(inIsp, arguments.force);
    if (version.empty()) {
        scope.face.ShowInfo("Can not found any device on comm port!!\r\n");
        if (const auto noise = scope.updater.scanner().unreadable(); !noise.empty()) scope.face.say(noise + ".");
        return scope.end(session.cancel.isRequested() ? kCancelled : kNoDevice);
    }
    scope.face.ShowInfo("\r\n");
    const auto port = session.comm->CommPort();
    const auto settings = session.comm->Settings();
    if (arguments.json) {
        console.out.write("{" + jsonPair("port", port) + "," + jsonPair("settings", settings) + "," +
                          jsonPair("version", version) + ",\"bootLoader\":" + (inIsp ? "true" : "false") + "}\n");
    } else {
        writeHarmless(console.out, port + "\t" + withoutControls(toUtf8(version)) + "\n");
    }
    return scope.end(0);
}

int imagesCommand(Console& console, const Arguments& arguments) {
    constexpr int kNoSite = 4, kNothing = 1, kCancelled = 1;
    CommandScope scope(console, arguments, console.err, false);
    auto& site = scope.updater.site();
    bool cancelled = false;
    console.interrupt = [&] {
        cancelled = true;
        site.cancel();
    };
    const bool fetched =
        scope.updater.choices.offLine || (site.login() && !cancelled && site.fetchInformation(scope.updater.inf()));
    if (!fetched) {
        if (cancelled) return scope.end(kCancelled);
        const bool isThere = site.failure().kind == SiteFailure::Kind::notBelieved;
        scope.face.say((isThere ? "firmware.inf is not to be believed: " : "The site could not be read: ") +
                       site.failure().words + ".");
        return scope.end(kNoSite);
    }
    auto& selection = scope.updater.selection();
    const auto records = selection.list();
    const auto vouching = selection.vouching();
    for (const auto& text : site.takeRemarks()) scope.face.say(text);
    for (const auto& text : {vouching.details, selection.withheld()}) {
        if (!text.empty()) scope.face.say(text);
    }
    if (const auto& why = scope.updater.inf().distrust(); !why.empty()) {
        scope.face.say("firmware.inf is not to be believed: " + why + ".");
        return scope.end(kNoSite);
    }
    std::vector<std::string> objects;
    for (const auto& record : records) {
        objects.push_back("{" + jsonPair("section", record.section) + "," + jsonPair("product", record.product) + "," +
                          jsonPair("version", record.version) + "," + jsonPair("description", record.description) +
                          "," + jsonPair("file", record.file) + "}");
        if (arguments.json) continue;
        std::vector<std::string> cells;
        for (const auto* cell : {&record.section, &record.product, &record.version, &record.file})
            cells.push_back(withoutControls(toUtf8(*cell)));
        writeHarmless(console.out, joined(cells, "\t") + "\n");
    }
    if (arguments.json) console.out.write(jsonList("images", objects, vouching.name));
    if (records.empty()) scope.face.ShowInfo("Firmware file(s) not found !!!\r\n");
    return scope.end(records.empty() ? kNothing : 0);
}

}  // namespace corvane
