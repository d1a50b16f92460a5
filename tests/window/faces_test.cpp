#include "../console/ConsoleBench.h"
#include "WindowBench.h"
#include "face/FirmwareDialog.h"

namespace corvane::tests {

/// Writes down what a face shows in the log, what it is asked and what it answers, and hands it on.
struct Witness : Log, OperatorPrompts {
    std::string events;

    FaceWitness between() {
        return [this](const Face& face) {
            face_.emplace(face);
            return Face{*this, face.progress, face.panel, face.password, *this, face.view};
        };
    }

private:
    void ShowInfo(std::string_view text) override {
        events.append("|").append(text);
        face_->log.ShowInfo(text);
    }
    void clear() override {
        events += "|clear";
        face_->log.clear();
    }
    bool messageBox(Question question, const std::string& text) override {
        const bool agrees = face_->prompts.messageBox(question, text);
        events += "|" + text + (agrees ? "yes" : "no");
        return agrees;
    }
    void chooseFirmware(FirmwareDialog& dialog) override {
        events += "|" + dialog.header();
        face_->prompts.chooseFirmware(dialog);
        events += "|" + dialog.details();
    }

    std::optional<Face> face_;
};

constexpr char kUnsound[] = "[INFO]\nPGM=TARN-R200\n:0400000001020304F3\n:00000001FF\n";

/// A run and what the operator does meanwhile.
struct Script {
    const char* lastText;
    const char* fault = "";
    const char* image = WindowBench::kImage;
    const char* password = nullptr;  ///< that the device wants, and the operator types
    int stopsAt = 0;                 ///< ms after which the operator gives up
};

void setUp(fakes::AppBench& bench, const Script& script) {
    models::DeviceOptions options;
    if (script.password) options.password = script.password;
    if (script.stopsAt) options.baud = 115200;  // so that there is a scan to give up
    auto& device = bench.plug(options);
    if (*script.fault) device.faults().add(script.fault);
}

std::string throughTheWindow(const Script& script) {
    Witness witness;
    WindowBench window;
    setUp(window.bench, script);
    WindowOptions options;
    options.witness = witness.between();
    window.open(options);
    window.pickImage(script.image);
    if (!script.stopsAt) window.agree();
    if (script.password) {
        window.answers.expect("frmPassword", [&](QDialog& box) {
            box.findChild<QLineEdit*>()->setText(script.password);
            QTest::keyClick(box.focusWidget(), Qt::Key_Return);
        });
    }
    if (script.image == kUnsound) window.answers.expect("frmMessage", DialogAnswers::pressing("cmdCancel"));
    if (script.stopsAt)
        window.bench.runtime.at(window.bench.runtime.ms() + script.stopsAt, [&] { window.press("cmdCancel"); });
    window.press("cmdStartCheck");
    return witness.events;
}

std::string throughTheConsole(const Script& script) {
    Witness witness;
    fakes::AppBench bench;
    setUp(bench, script);
    KeptText out, err;
    ScriptedTerminal terminal;
    terminal.there = true;
    terminal.lines = {"y", script.password ? script.password : "n"};
    auto platform = bench.platform();
    Console console{platform, out, err, terminal, std::nullopt, std::nullopt, nullptr, witness.between()};
    if (script.stopsAt) bench.runtime.at(bench.runtime.ms() + script.stopsAt, [&] { console.interrupt(); });
    std::string problem;
    const auto file = bench.folder.folder.file("local.hex", script.image);
    console.run(parseArguments({"update", "--no-verify", "--file", file}, problem).value());
    return witness.events;
}

/// The two faces differ in how they show and ask, in nothing else.
TEST(Faces, SeeTheSameRun) {
    const Script scripts[] = {
        {.lastText = "Update Finish\r\n", .password = "wing"},
        {.lastText = "\r\niTry:3\r\n", .fault = "nak@2x9"},
        {.lastText = "Install it all the same?no", .image = kUnsound},
        {.lastText = "Can not found any device on comm port!!\r\n", .stopsAt = 700},
    };
    for (const auto& script : scripts) {
        const auto seen = throughTheWindow(script);
        EXPECT_TRUE(seen.ends_with(script.lastText)) << seen;
        EXPECT_EQ(seen, throughTheConsole(script));
    }
}

}  // namespace corvane::tests
