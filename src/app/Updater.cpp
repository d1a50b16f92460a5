#include "app/Updater.h"

#include <algorithm>

#include "settings/StoredSettings.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

Updater::Updater(const Platform& platform, const Face& face)
    : recorder_(platform, face),
      platform_(recorder_.platform()),
      face_(recorder_.face()),
      answers_(face_.prompts, face_.password),
      vellIO_(platform_.runtime, platform_.modules, platform_.hidLibrary, cancel_),
      serialPort_(platform_.ports),
      reader_(vellIO_, platform_),
      session_(platform_.runtime, face_.log, serialPort_, cancel_),
      ports_(session_, serialPort_, hidPort_, reader_),
      scanner_(session_, serialPort_, hidPort_, answers_, face_.panel),
      isp_(session_, answers_),
      programmer_(session_, face_.progress, platform_.digest),
      trust_(platform_.signatures, platform_.keys, platform_.folder, platform_.files),
      inf_(platform_.folder, &trust_),
      ftp_(platform_.reader, platform_.runtime),
      site_({ftp_, platform_.reader, platform_.runtime, choices, platform_.settings, platform_.folder, face_.log,
             face_.progress}),
      references_(site_, choices, platform_.settings, platform_.folder, platform_.launcher),
      selfUpdate_(inf_, platform_.folder, site_, answers_, platform_.launcher, platform_.digest),
      selection_(choices, platform_.folder, inf_, platform_.settings, answers_, face_.log),
      journal_(platform_.folder, platform_.files, platform_.processes),
      recordingFile_(platform_.files, recorder_.tape),
      jobs_(platform_.folder, platform_.files),
      online_(site_, selfUpdate_, inf_, {platform_.launcher, platform_.hidLibrary}, face_.log, face_.view),
      installation_(session_, {scanner_, isp_, programmer_}, journal_, platform_.inhibitor, face_.view),
      run_({choices, session_, ports_, scanner_, site_, online_, selection_, inf_, platform_.folder, platform_.digest,
            installation_, answers_, face_.view}),
      series_(session_, ports_, scanner_, isp_, face_.view),
      advisor_(platform_.serial, platform_.ports, platform_.inspector),
      portList_(platform_.ports, platform_.inspector, vellIO_),
      reports_({platform_, choices, inf_, recorder_.tape}) {
    vellIO_.watch(
        [this](const char* what, const Bytes& bytes) { recorder_.tape.crossed(what, vellIO_.CommPort(), bytes); });
    journal_.makeRecording = [this](const std::string& start, const std::string& end) {
        return recordingFile_.begin(start, end);
    };
    session_.veil = [this](const Bytes& secret) { recorder_.tape.veil(secret); };
    session_.hasLine = [this] { return session_.comm != &serialPort_ || platform_.serial.hasLine(); };
    session_.mayLookAwake = [this] {
        return !StoredSettings(platform_.settings).connection().sparesBattery || !platform_.power.isOnBattery();
    };
    serialPort_.Attach(&platform_.serial, &commEvent_);
    serialPort_.InputMode(1);
    serialPort_.CommPort("COM1");
    vellIO_.showCritical = [&view = face_.view](const std::string& message) { view.advice(message); };
    vellIO_.OnDevice = [this](std::int32_t event, const std::string& port, const std::string& device) {
        tellReader(event, port, device);
    };
    advisor_.readerFailure = [this](const std::string& port) {
        return PortAdvisor::ReaderFailure{vellIO_.openFailure(), vellIO_.devicePath(port), vellIO_.isInUse()};
    };
    vellIO_.ReadProperties(true, {});
    hidPort_.Attach(&vellIO_, &commEvent_);
}

Outcome Updater::start(bool force, bool keepsAnswers) {
    answers_.begin(keepsAnswers);
    const auto kept = scanner_.onlyPort();
    const auto next = series_.takePlace();
    if (!next.port.empty()) scanner_.onlyPort(next.port);
    scanner_.firstSettings(next.settings);
    if (force) lookFirstWhereItIsMissed();
    auto outcome = run_.run(force);
    scanner_.onlyPort(kept);
    return outcome;
}

/// A device that waits for this image is looked for at its adapter, or at its port: another one may be waiting, too.
void Updater::lookFirstWhereItIsMissed() {
    for (const auto& left : journal_.left()) {
        if (!choices.isLocalFile() || left.image != choices.image.path()) continue;
        session_.rememberedPort = fromUtf8(left.port);
        for (const auto& name : scanner_.portNames()) {
            if (left.place.empty() || reader_.place(name) != left.place) continue;
            session_.rememberedPort = name;
            break;
        }
    }
}

Verdict Updater::conclude(Outcome outcome) {
    auto& facts = outcome.facts;
    const auto problem =
        rowOf(outcome.end).isJob ? jobs_.add(jobOf(outcome, platform_.runtime.timestamp())) : std::string();
    if (!problem.empty())
        facts.remarks.push_back("The record " + jobs_.path() + " could not be written: " + problem + ".");
    auto verdict = verdictFor(outcome);
    reports_.concluded(outcome, verdict);
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
    onReader(name + (event == kPlugged ? " is plugged in." : " was unplugged."), event == kPlugged);
}

std::string Updater::HidReader::place(const std::string& port) {
    if (vellIO_.PortOpen()) return toUtf8(vellIO_.GetDeviceSerialNumber(port));
    constexpr std::size_t kPrefix = 3;  // "COM"
    const auto number = port.substr(std::min(kPrefix, port.size()));
    const auto node = platform_.ports.devicePath(static_cast<int>(leadingNumber(number)));
    if (!node) return {};
    const auto adapter = platform_.inspector.adapterOf(*node);
    if (!adapter.serialNumber.empty()) return std::string(trimmed(adapter.product + " " + adapter.serialNumber));
    return adapter.socket.empty() ? std::string() : "USB socket " + adapter.socket;
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
