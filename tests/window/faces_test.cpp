#include <algorithm>
#include <sstream>

#include "../console/ConsoleBench.h"
#include "WindowBench.h"
#include "face/FirmwareDialog.h"

namespace corvane {
namespace {

/// Writes down what goes between the workflow and a face, and hands it on.
class Witness : Log, Progress, PortPanel, PasswordPrompt, OperatorPrompts, RunView {
public:
    std::vector<std::string> events;

    FaceWitness between() {
        return [this](const Face& face) {
            face_.emplace(face);
            return Face{*this, *this, *this, *this, *this, *this};
        };
    }

private:
    template <typename... Parts>
    void note(const char* what, const Parts&... parts) {
        std::ostringstream line;
        line << what;
        ((line << " " << parts), ...);
        events.push_back(line.str());
    }

    void ShowInfo(std::string_view text) override { note("log", text), face_->log.ShowInfo(text); }
    void clear() override { note("clear"), face_->log.clear(); }
    void progress(std::int64_t value, std::int64_t maximum) override {
        note("progress", value, maximum), face_->progress.progress(value, maximum);
    }
    void transferred(std::int64_t bytes, std::int64_t total) override {
        note("transferred", bytes, total), face_->progress.transferred(bytes, total);
    }
    void showPorts(const std::vector<std::string>& names) override {
        note("ports", names.size()), face_->panel.showPorts(names);
    }
    void enablePort(int index, bool enabled) override {
        note("port", index, enabled), face_->panel.enablePort(index, enabled);
    }
    void hidePorts() override { note("no ports"), face_->panel.hidePorts(); }
    void trying(const std::string& port, const std::string& settings) override {
        note("trying", port, settings), face_->panel.trying(port, settings);
    }
    void portRefused(const std::string& port) override { note("refused", port), face_->panel.portRefused(port); }
    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override {
        const auto answer = face_->password.inputBox(prompt, title, byDefault);
        note("password", prompt, title, byDefault, answer);
        return answer;
    }
    bool messageBox(Question question, const std::string& text) override {
        const bool agrees = face_->prompts.messageBox(question, text);
        note("question", static_cast<int>(question), text, agrees);
        return agrees;
    }
    void chooseFirmware(FirmwareDialog& dialog) override {
        note("choice", dialog.header(), dialog.selected());
        face_->prompts.chooseFirmware(dialog);
        note("chosen", dialog.details());
    }
    void running(bool isRunning) override { note("running", isRunning), face_->view.running(isRunning); }
    void cancellable(bool isOn) override { note("cancellable", isOn), face_->view.cancellable(isOn); }
    void phase(RunPhase phase) override { note("phase", static_cast<int>(phase)), face_->view.phase(phase); }
    void links(const std::vector<ReferenceLink>& links) override {
        note("links", links.size()), face_->view.links(links);
    }
    void advice(const std::string& text) override { note("advice", text), face_->view.advice(text); }

    std::optional<Face> face_;
};

constexpr char kUnsound[] = "[INFO]\nPGM=TARN-R200\n:0400000001020304F3\n:00000001FF\n";

/// A run and what the operator does meanwhile.
struct Script {
    const char* name;
    const char* lastText;
    models::DeviceOptions device;
    const char* fault = "";
    const char* image = WindowBench::kImage;
    const char* password = nullptr;  ///< typed when the device wants one
    int stopsAt = 0;                 ///< ms after which the operator gives up
    bool isOnline = false;
};

models::DeviceOptions device(void (*change)(models::DeviceOptions&) = [](models::DeviceOptions&) {}) {
    models::DeviceOptions options;
    change(options);
    return options;
}

void setUp(fakes::AppBench& bench, models::Device& device, const Script& script) {
    if (*script.fault) device.faults().add(script.fault);
    bench.asksAfterwards(true);
    const std::string site = "ftp://upd:pw@ftp.example";
    bench.reader.answers[site].content = "drwxr-xr-x firmware\r\n";
    bench.reader.answers[site + "/firmware/firmware.inf"].content =
        "[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=one\\ntwo\nFILE=/f/r200.hex\nLinkDOC1=Notes\n";
    bench.reader.answers[site + "/f/r200.hex"].content = script.image;
    for (const auto& [key, value] :
         {std::pair("FTP/Server", "ftp.example"), {"FTP/UserName", "upd"}, {"FTP/Password", "pw"}}) {
        bench.settings.values[std::string("Corvane/") + key] = value;
    }
}

std::vector<std::string> throughTheWindow(const Script& script) {
    Witness witness;
    WindowBench window;
    setUp(window.bench, window.plug(script.device), script);
    WindowOptions options;
    options.witness = witness.between();
    window.open(options);
    if (!script.isOnline) window.pickImage(script.image);
    const bool isUnsound = script.image == kUnsound;
    if (!script.stopsAt) window.agree();
    if (script.password) {
        window.answers.expect("frmPassword", [&](QDialog& box) {
            box.findChild<QLineEdit*>()->setText(script.password);
            QTest::keyClick(box.focusWidget(), Qt::Key_Return);
        });
    }
    if (isUnsound) window.answers.expect("frmMessage", DialogAnswers::pressing("cmdCancel"));
    if (script.stopsAt)
        window.bench.runtime.at(window.bench.runtime.ms() + script.stopsAt, [&] { window.press("cmdCancel"); });
    window.press("cmdStartCheck");
    return witness.events;
}

std::vector<std::string> throughTheConsole(const Script& script) {
    Witness witness;
    fakes::AppBench bench;
    models::Device device(script.device);
    bench.serial.plug(1, device);
    setUp(bench, device, script);
    KeptText out, err;
    ScriptedTerminal terminal;
    terminal.there = true;
    terminal.lines.emplace_back("y");
    if (script.password) terminal.lines.emplace_back(script.password);
    if (script.image == kUnsound) terminal.lines.emplace_back("n");
    auto platform = bench.platform();
    Console console{platform, out, err, terminal, std::nullopt, std::nullopt, nullptr, witness.between()};
    if (script.stopsAt) bench.runtime.at(bench.runtime.ms() + script.stopsAt, [&] { console.interrupt(); });
    std::vector<std::string> words = {"update"};
    if (!script.isOnline) words.insert(words.end(), {"--file", bench.folder.folder.file("local.hex", script.image)});
    std::string problem;
    console.run(parseArguments(words, problem).value());
    return witness.events;
}

/// The two faces differ in how they show and ask, in nothing else.
TEST(Faces, SeeTheSameRun) {
    const Script scripts[] = {
        {"off line", "Update Finish\r\n", device()},
        {"on line", "Update Finish\r\n", device(), "", WindowBench::kImage, nullptr, 0, true},
        {"a password", "Update Finish\r\n", device([](auto& options) { options.password = "wing"; }), "",
         WindowBench::kImage, "wing"},
        {"three failures", "\r\niTry:3\r\n", device(), "nak@2x9"},
        {"an image that does not add up", "\r\n", device(), "", kUnsound},
        {"given up while scanning", "Can not found any device on comm port!!\r\n",
         device([](auto& options) { options.baud = 115200; }), "", WindowBench::kImage, nullptr, 700},
        {"unplugged", "\r\niTry:3\r\n", device(), "unplug@2"},
    };
    for (const auto& script : scripts) {
        SCOPED_TRACE(script.name);
        const auto seen = throughTheWindow(script);
        EXPECT_EQ(
            *std::find_if(seen.rbegin(), seen.rend(), [](const auto& event) { return event.substr(0, 4) == "log "; }),
            "log " + std::string(script.lastText));
        EXPECT_EQ(seen, throughTheConsole(script));
    }
}

}  // namespace
}  // namespace corvane
