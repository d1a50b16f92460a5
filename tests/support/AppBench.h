#pragma once

#include <numeric>

#include "app/Updater.h"
#include "models/Device.h"
#include "models/Flash.h"
#include "support/FakeAsyncReader.h"
#include "support/FakeModuleLoader.h"
#include "support/FakeProgramFolder.h"
#include "support/FakeSystem.h"
#include "support/RecordingFace.h"
#include "support/SerialBench.h"
#include "support/SignedSite.h"

namespace corvane::fakes {

/// A face that writes everything down and answers as the test says.
class RecordingOperator : public RecordingFace, public OperatorPrompts, public RunView {
public:
    bool agrees = true;            ///< to message boxes
    std::string selects;           ///< a section; empty takes the preselection
    bool closesSelection = false;  ///< without choosing
    std::vector<std::string> boxes;
    std::vector<std::string> offered;  ///< the entries of the last selection
    std::vector<ReferenceLink> shownLinks;
    std::vector<RunPhase> phases;
    std::vector<std::string> events;                          ///< "running", "idle", "cancel on", "cancel off"
    std::function<bool(Question, const std::string&)> onBox;  ///< answers instead
    std::function<void(RunPhase)> onPhase;
    std::function<void()> onSelection;  ///< while the selection is open

    Face face() { return {*this, *this, *this, *this, *this, *this}; }

    bool messageBox(Question question, const std::string& text) override {
        if (onBox) return onBox(question, text);
        boxes.push_back(text);
        return agrees;
    }

    void chooseFirmware(FirmwareDialog& dialog) override {
        offered.clear();
        for (const auto& entry : dialog.entries()) offered.push_back(entry.text);
        if (onSelection) onSelection();
        for (int i = 0; !selects.empty() && i < static_cast<int>(dialog.entries().size()); ++i) {
            if (dialog.entries()[static_cast<std::size_t>(i)].record.section == selects) dialog.select(i);
        }
        if (!closesSelection) dialog.ok(*this);
    }

    void running(bool isRunning) override { events.emplace_back(isRunning ? "running" : "idle"); }
    void cancellable(bool isCancellable) override { events.emplace_back(isCancellable ? "cancel on" : "cancel off"); }
    void phase(RunPhase phase) override {
        phases.push_back(phase);
        if (onPhase) onPhase(phase);
    }
    void links(const std::vector<ReferenceLink>& links) override { shownLinks = links; }
    void advice(const std::string&) override {}
};

/// An image for the simulated devices.
inline constexpr char kImage[] =
    "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
    ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:00000001FF\n";

/// A line of Intel HEX with its checksum.
inline std::string hexRecord(unsigned address, const Bytes& data, std::uint8_t type = 0) {
    Bytes bytes = {static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(address >> 8),
                   static_cast<std::uint8_t>(address), type};
    bytes.insert(bytes.end(), data.begin(), data.end());
    bytes.push_back(static_cast<std::uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0)));
    std::string text = ":";
    for (const auto byte : bytes) text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    return text + "\n";
}

/// The whole workflow in virtual time, over fakes of everything that it stands on.
struct AppBench {
    SerialBench serial;
    FakeRuntime& runtime = serial.runtime;
    FakeModuleLoader modules;
    FakeAsyncReader reader{runtime};
    FakeSettingsStore settings;
    FakeProgramFolder folder;
    FakeLauncher launcher;
    FakeDigest digest;
    FakePortInspector inspector;
    FakeInhibitor inhibitor;
    FakePowerSupply power;
    FakeFileStore files;
    FakeProcesses processes;
    SodiumSignatures signatures;
    ScratchFolder keys;  ///< of those who are trusted: nobody, from the start
    RecordingOperator face;
    std::vector<std::unique_ptr<models::Device>> devices;

    AppBench() { asksAfterwards(false); }

    /// Whether the next runs ask the device afterwards, which they do not from the start.
    void asksAfterwards(bool asks) { settings.before["Corvane/Update/AskVersion"] = asks ? "True" : "False"; }
    bool asksAfterwards() const { return settings.before.at("Corvane/Update/AskVersion") == "True"; }

    Platform platform() {
        return {runtime,    serial.control, serial.map, modules,   reader,
                settings,   folder,         launcher,   digest,    inspector,
                inhibitor,  power,          files,      processes, folder.path() + "/VellIO.so",
                signatures, {{keys.path()}}};
    }

    models::Device& plug(models::DeviceOptions options = {}, std::int16_t number = 1) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        serial.plug(number, *devices.back());
        return *devices.back();
    }

    /// Empty when the first device's memory is the image's.
    std::string memoryFault(const std::string& image = kImage) const {
        const auto fault = models::comparison(devices.front()->flash(), models::imageOf(image));
        return fault == "memory equals image" ? "" : fault;
    }

    /// A file below the program's folder.
    void write(const std::string& name, const std::string& content) { folder.folder.file(name, content); }
};

}  // namespace corvane::fakes
