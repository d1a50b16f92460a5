#include "ports/clsMSComm.h"

#include <cstdio>
#include <utility>

#include "text/Number.h"
#include "text/SettingsText.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kDefaultSettings[] = "19200,N,8,1";
constexpr int kMostPorts = 256;          // what one discovery looks at
constexpr std::size_t kNameBuffer = 64;  // both with the terminating NUL
constexpr std::size_t kDataBuffer = 8;

double portNumber(const std::string& name) { return leadingNumber(std::string_view(name).substr(3)); }

}  // namespace

clsMSComm::~clsMSComm() {
    if (m_oMSComm) m_oMSComm->OnComm = nullptr;
}

void clsMSComm::Attach(SerialControl* oMSComm, clsMSCommEvent* oMSCommEvent) {
    if (m_oMSComm) m_oMSComm->OnComm = nullptr;
    m_oMSComm = oMSComm;
    m_oMSCommEvent = oMSCommEvent;
    m_szSettings = oMSComm ? oMSComm->Settings() : kDefaultSettings;
    if (oMSComm) oMSComm->OnComm = [this] { onControlEvent(); };
}

SerialControl& clsMSComm::control() const {
    if (!m_oMSComm) throw PortError(91, "No serial control is attached");
    return *m_oMSComm;
}

std::string clsMSComm::CommPort() { return "COM" + std::to_string(control().CommPort()); }

void clsMSComm::CommPort(const std::string& szCommPort) {
    try {
        if (isNumeric(szCommPort)) {
            // A bare number does not close an open port first: the control then refuses, and the port stays.
            control().CommPort(toInteger(leadingNumber(szCommPort)));
        } else if (szCommPort.compare(0, 3, "COM") == 0) {
            if (control().PortOpen()) PortOpen(false);
            control().CommPort(toInteger(portNumber(szCommPort)));
        }
    } catch (const RuntimeError&) {
        // Selecting a port never fails; opening it will.
    }
}

void clsMSComm::PortOpen(bool bPortOpen) {
    try {
        if (bPortOpen) restoreSettings();  // a port that was lost has had no closing to do it
        control().PortOpen(bPortOpen);
    } catch (const RuntimeError&) {
        // The caller reads PortOpen; the control keeps the reason (openFailure).
    }
    restoreSettings();
}

void clsMSComm::restoreSettings() {
    try {
        if (!control().PortOpen()) control().Settings(m_szSettings);
    } catch (const RuntimeError&) {
        // Settings that the control does not accept: the next opening starts from its own.
    }
}

void clsMSComm::DTREnable(bool bDTREnable) {
    control().DTREnable(bDTREnable);
    reapplySettings();
}

void clsMSComm::RTSEnable(bool bRTSEnable) {
    control().RTSEnable(bRTSEnable);
    reapplySettings();
}

void clsMSComm::reapplySettings() {
    if (control().PortOpen() && control().Settings() != m_szSettings) {
        SetCOMMSettings(control().CommID(), m_szSettings);
    }
}

std::string clsMSComm::Settings() {
    return control().PortOpen() ? GetCOMMSettings(control().CommID()) : control().Settings();
}

void clsMSComm::Settings(const std::string& szSettings) {
    auto fields = split(Settings(), ',');
    const auto text = trimmed(szSettings);
    if (fields.size() != 4 || text.empty()) return;
    for (const auto& piece : split(text, ',')) {
        switch (settingsFieldOf(piece)) {
            case SettingsField::rate:
                fields[0] = piece;
                break;
            case SettingsField::parity:
                fields[1] = piece;
                break;
            case SettingsField::dataBits:
                fields[2] = piece;
                break;
            case SettingsField::stopBits:
                fields[3] = piece;
                break;
            case SettingsField::none:
                break;
        }
    }
    m_szSettings = joined(fields, ",");
    if (control().PortOpen()) {
        SetCOMMSettings(control().CommID(), m_szSettings);
    } else {
        control().Settings(m_szSettings);
    }
}

std::string clsMSComm::GetCOMMSettings(std::int32_t handle) {
    CommState state;
    if (!control().GetCommState(handle, state)) {
        GetSystemErrorText(control().GetLastError());
        return {};
    }
    return settingsTextOf(state).value_or(std::string());
}

namespace {

/// The rates of ordinary ports, nearly all of them multiples of 150; 0 is one too and passes.
bool isKnownRate(std::uint32_t rate) {
    for (const std::uint32_t listed : {110, 56000, 128000, 256000}) {
        if (rate == listed) return true;
    }
    return rate % 150 == 0;
}

}  // namespace

bool clsMSComm::SetCOMMSettings(std::int32_t handle, const std::string& szSettings) {
    CommState state;
    const bool read = control().GetCommState(handle, state);
    const auto wanted = parseSettingsText(szSettings);
    if (read && (!wanted || !isKnownRate(wanted->baudRate))) return false;
    if (read && control().SetCommState(handle, *wanted)) return true;
    GetSystemErrorText(control().GetLastError());
    return false;
}

std::string clsMSComm::GetSystemErrorText(std::uint32_t code) {
    std::string message = control().FormatMessage(code).substr(0, 512);
    if (message.empty()) return {};
    while (!message.empty() && (message.back() == '\r' || message.back() == '\n')) message.pop_back();
    char suffix[16];
    std::snprintf(suffix, sizeof suffix, "(0x%X)", code);
    return message + suffix;
}

bool clsMSComm::IsMyCommPort(const std::string& szPortName) {
    const auto rest = std::string_view(szPortName).substr(std::min<std::size_t>(3, szPortName.size()));
    if (!startsWithNoCase(szPortName, "COM") || !isNumeric(rest)) return false;
    const double number = roundToEven(leadingNumber(rest));
    return number >= 1 && number <= 16;
}

std::int32_t clsMSComm::NumberOfCommPorts() {
    m_lPortCount = 0;
    std::vector<std::string> names;
    if (const auto entries = map_.list()) {
        for (const auto& entry : *entries) {
            const bool fits = entry.device.size() < kNameBuffer && entry.port.size() < kDataBuffer;
            if (!fits || &entry - entries->data() >= kMostPorts) break;
            if (entry.port.compare(0, 3, "COM") == 0) names.push_back(entry.port);
        }
    }
    if (names.empty()) return 0;
    m_aszPorts = std::move(names);
    m_lPortCount = static_cast<std::int32_t>(m_aszPorts.size());
    m_bPortsFresh = true;
    for (std::size_t i = 0; i + 1 < m_aszPorts.size(); ++i) {
        for (std::size_t j = i + 1; j < m_aszPorts.size(); ++j) {
            if (portNumber(m_aszPorts[j]) < portNumber(m_aszPorts[i])) std::swap(m_aszPorts[i], m_aszPorts[j]);
        }
    }
    return m_lPortCount;
}

std::string clsMSComm::EnumCommPort(std::int32_t Index) {
    if (!m_bPortsFresh && (Index == 0 || m_lPortCount == 0)) m_lPortCount = NumberOfCommPorts();
    m_bPortsFresh = false;
    return Index >= 0 && Index < m_lPortCount ? m_aszPorts[static_cast<std::size_t>(Index)] : std::string();
}

std::string clsMSComm::EnumCommPortEx(std::int32_t /*Index*/) { return {}; }

void clsMSComm::onControlEvent() {
    if (control().PortOpen() && control().CommEvent() == kFramingError) {
        PortOpen(false);
        PortOpen(true);
    }
    if (m_oMSCommEvent) m_oMSCommEvent->RaiseOnComm();
}

}  // namespace corvane
