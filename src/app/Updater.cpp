#include "app/Updater.h"

namespace corvane {

Updater::Updater(const Platform& platform, const Face& face)
    : platform_(platform),
      vellIO_(platform.runtime, platform.modules, platform.hidLibrary, cancel_),
      serialPort_(platform.ports),
      reader_(vellIO_),
      session_(platform.runtime, face.log, serialPort_, cancel_),
      query_(session_),
      scanner_(session_, serialPort_, hidPort_, face.password, face.panel),
      isp_(session_, face.password),
      programmer_(session_, face.progress),
      inf_(platform.folder),
      ftp_(platform.reader, platform.runtime),
      site_(ftp_, platform.reader, platform.runtime, choices, platform.settings, platform.folder, face.log,
            face.progress),
      selfUpdate_(inf_, platform.folder, site_, face.prompts),
      selection_(choices, platform.folder, inf_, platform.settings, face.prompts, face.log),
      journal_(platform.folder),
      jobs_(platform.folder),
      run_({choices,
            session_,
            serialPort_,
            hidPort_,
            scanner_,
            isp_,
            programmer_,
            query_,
            site_,
            selfUpdate_,
            selection_,
            inf_,
            platform.folder,
            platform.launcher,
            reader_,
            platform.digest,
            journal_,
            platform.inhibitor,
            face.prompts,
            face.view,
            platform.hidLibrary}),
      proof_(session_, scanner_),
      advisor_(platform.serial, platform.ports, platform.inspector) {
    serialPort_.Attach(&platform_.serial, &commEvent_);
    serialPort_.InputMode(1);
    serialPort_.CommPort("COM1");
    vellIO_.showCritical = [&view = face.view](const std::string& message) { view.advice(message); };
    vellIO_.OnDevice = [this](std::int32_t event, const std::string& port, const std::string& device) {
        tellReader(event, port, device);
    };
    advisor_.readerFailure = [this] { return vellIO_.openFailure(); };
    vellIO_.ReadProperties(true, {});
    hidPort_.Attach(&vellIO_, &commEvent_);
}

Verdict Updater::conclude(const RunReport& report, bool prove) {
    std::optional<Proof> proof;
    if (prove && report.end == RunEnd::updated) proof = proof_.ask(report);
    auto verdict = verdictFor(report, proof);
    if (report.end != RunEnd::alreadyRunning && !jobs_.add(jobOf(report, proof, platform_.runtime.timestamp()))) {
        verdict.facts.push_back("The record " + jobs_.path() + " could not be written.");
    }
    return verdict;
}

void Updater::shutDown() {
    if (serialPort_.PortOpen()) serialPort_.PortOpen(false);
    vellIO_.Terminate();
    if (site_.isConnected()) site_.disconnect();
}

void Updater::tellReader(std::int32_t event, const std::string& port, const std::string& device) {
    constexpr std::int32_t kUnplugged = 0, kPlugged = 1;
    if (!onReader || (event != kUnplugged && event != kPlugged)) return;
    const auto name = toUtf8(device.empty() ? port : device);
    onReader(name + (event == kPlugged ? " is plugged in." : " was unplugged."));
}

/// The text of the reader that is open.
std::string Updater::HidReader::deviceText() {
    if (!vellIO_.PortOpen()) return {};
    const auto count = vellIO_.NumberOfCommPorts();
    for (std::int32_t i = 0; i < count; ++i) {
        if (vellIO_.EnumCommPort(i) == vellIO_.CommPort()) return vellIO_.EnumCommPortEx(i);
    }
    return {};
}

}  // namespace corvane
