#include "protocol/DeviceScanner.h"

#include <algorithm>

#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::array<const char*, 5> kSettings = {"19200,N,8,1", "115200,N,8,1", "38400,N,8,1", "57600,N,8,1",
                                                  "9600,N,8,1"};
constexpr double kTarnBaudRate = 9600;
constexpr std::uint8_t kLine = 13;

}  // namespace

DeviceScanner::DeviceScanner(DeviceSession& session, clsIMScomm& serialPort, clsIMScomm& hidPort,
                             PasswordPrompt& prompt, PortPanel& panel)
    : session_(session), ports_{&serialPort, &hidPort}, login_(session, prompt), lines_(session), panel_(panel) {}

std::vector<std::string> DeviceScanner::portNames() {
    std::vector<std::string> names;
    for (auto* port : ports_) {
        const auto count = port->NumberOfCommPorts();
        for (std::int32_t i = 0; i < count; ++i) names.push_back(port->EnumCommPort(i));
    }
    return names;
}

/// All ports, starting at the remembered one: at the port of just that name (COM10 holds COM1 too), else at the first
/// whose name occurs in it. Without one that matches, the order begins with an empty entry.
std::vector<std::string> DeviceScanner::scanOrder() {
    auto names = portNames();
    if (!onlyPort_.empty()) std::erase_if(names, [this](const auto& name) { return name != onlyPort_; });
    const auto& remembered = session_.rememberedPort;
    auto start = std::find(names.begin(), names.end(), remembered);
    if (start == names.end()) {
        start = std::find_if(names.begin(), names.end(), [&remembered](const std::string& name) {
            return !name.empty() && remembered.find(name) != std::string::npos;
        });
    }
    if (start == names.end()) {
        names.insert(names.begin(), std::string());
    } else {
        std::rotate(names.begin(), start, names.end());
    }
    return names;
}

std::vector<std::string> DeviceScanner::settingsOrder() const {
    std::vector<std::string> order(kSettings.begin(), kSettings.end());
    const auto first = std::find(order.begin(), order.end(), firstSettings_);
    if (first != order.end()) std::rotate(order.begin(), first, first + 1);
    return order;
}

std::string DeviceScanner::DeviceScan(bool& bInISP, bool bAcceptISP) {
    session_.manualPort = false;
    bootLoaderPort_.clear();
    unreadable_.clear();
    order_ = scanOrder();
    settings_ = settingsOrder();
    portCount_ = {static_cast<int>(std::count_if(order_.begin(), order_.end(),
                                                 [](const std::string& name) { return !name.empty(); })),
                  0};
    nextSetting_.assign(order_.size(), 0);
    panel_.showPorts(order_);
    const int count = static_cast<int>(order_.size());
    int current = -1;
    std::string version;
    for (int step = 0; step < count; ++step) {
        current = (current + 1) % count;
        panel_.enablePort(current, false);
        const auto& name = order_[static_cast<std::size_t>(current)];
        if (name.empty() || !selectPortObject(name) || !openPort(name)) continue;
        if (tryPort(current, bInISP, bAcceptISP, version) || session_.cancel.isRequested()) break;
        session_.comm->PortOpen(false);
        if (session_.manualPort) {
            panel_.enablePort(current, true);
            session_.manualPort = false;
            current = std::clamp<int>(session_.manualPortIndex, 0, count - 1) - 1;
            --step;
        }
    }
    panel_.hidePorts();
    return version;
}

/// Makes the object that drives a port of this name the current one; the present one is asked first.
bool DeviceScanner::selectPortObject(const std::string& name) {
    if (session_.comm->IsMyCommPort(name)) return true;
    auto* other = session_.comm == ports_[0] ? ports_[1] : ports_[0];
    if (!other->IsMyCommPort(name)) return false;
    session_.comm = other;
    return true;
}

bool DeviceScanner::openPort(const std::string& name) {
    session_.log.ShowInfo("Open " + name + " ...");
    session_.comm->CommPort(name);
    session_.comm->PortOpen(true);
    pause();
    const bool open = session_.comm->PortOpen();
    session_.log.ShowInfo(open ? " < OK\r\n" : " < NG\r\n");
    if (!open) panel_.portRefused(name);
    if (open) ++portCount_.opened;
    return open;
}

bool DeviceScanner::openAgain(const std::string& name, const std::string& settings) {
    if (!selectPortObject(name)) return false;
    session_.comm->CommPort(name);
    session_.comm->PortOpen(true);
    pause();
    if (!session_.comm->PortOpen()) return false;
    applySettings(settings);
    pause();
    return true;
}

/// A port and a device need a moment after a change. Events run in it too, or an operator whose ports refuse to open
/// one after the other could not cancel before the last of them.
void DeviceScanner::pause() {
    session_.runtime.Sleep(50);
    session_.runtime.DoEvents();
}

bool DeviceScanner::setSettings(const std::string& settings) {
    if (settings == session_.comm->Settings()) return true;
    applySettings(settings);
    pause();
    return session_.comm->PortOpen();
}

bool DeviceScanner::askVersion(const Way& way, std::int32_t timeout, std::string& version) {
    std::vector<std::string> settings(kSettings.begin(), kSettings.end());
    if (!way.protocolName.empty()) settings = {way.settings};
    for (const auto& one : settings) {
        if (!setSettings(one)) return false;
        if (way.protocolName != "Tarn" && login_.GetVersion(version, timeout)) return true;
        const bool mayBeTarn = way.protocolName.empty() && leadingNumber(one) == kTarnBaudRate;
        if ((mayBeTarn || way.protocolName == "Tarn") && probeTarn(version)) return true;
    }
    return false;
}

/// Goes through the settings that this port has not seen yet; True when a device answered.
bool DeviceScanner::tryPort(int index, bool& bInISP, bool bAcceptISP, std::string& version) {
    auto& next = nextSetting_[static_cast<std::size_t>(index)];
    while (next < settings_.size()) {
        const auto settings = settings_[next++];
        panel_.trying(order_[static_cast<std::size_t>(index)], settings);
        const auto outcome = trySettings(settings, bInISP, bAcceptISP, version);
        if (outcome == Outcome::inBootLoader) {
            bootLoaderPort_ = order_[static_cast<std::size_t>(index)];
            return false;
        }
        if (outcome == Outcome::bootLoaderAccepted) return true;
        if (outcome == Outcome::found) {
            session_.rememberedPort = order_[(static_cast<std::size_t>(index) + 1) % order_.size()];
            return true;
        }
        if (session_.cancel.isRequested() || session_.manualPort) return false;
    }
    return false;
}

DeviceScanner::Outcome DeviceScanner::trySettings(const std::string& settings, bool& bInISP, bool bAcceptISP,
                                                  std::string& version) {
    session_.log.ShowInfo("   Scan by " + settings);
    session_.hasHeard = false;
    applySettings(settings);
    pause();
    bInISP = login_.DetectPrompt();
    if (bInISP && bAcceptISP) {
        version = "Unknown Device";
        return Outcome::bootLoaderAccepted;
    }
    if (bInISP) {
        session_.log.ShowInfo(", In ISP Mode!!\r\n");
        return Outcome::inBootLoader;
    }
    lines_.wait_comm_empty();
    if (login_.GetVersion(version)) {
        session_.protocolName = "TarnPlus";
        return Outcome::found;
    }
    const bool isTarn = leadingNumber(settings) == kTarnBaudRate && probeTarn(version);
    if (isTarn) session_.protocolName = "Tarn";
    // Written even when a Tarn device has just been found: people know this log by heart.
    session_.log.ShowInfo(", No Device!!\r\n");
    if (!isTarn && session_.hasHeard)
        unreadable_.push_back(session_.comm->CommPort() + " at " + settings.substr(0, settings.find(',')));
    return isTarn ? Outcome::found : Outcome::nothing;
}

std::string DeviceScanner::unreadable() const {
    constexpr std::size_t kMostPlaces = 3;
    if (unreadable_.empty()) return {};
    const auto end = unreadable_.begin() + static_cast<std::ptrdiff_t>(std::min(unreadable_.size(), kMostPlaces));
    return "something answers on " + toUtf8(joined({unreadable_.begin(), end}, " and on ")) +
           ", but not in a way that can be read: noise, or another kind of device";
}

void DeviceScanner::applySettings(const std::string& settings) {
    try {
        session_.comm->Settings(settings);
        session_.comm->RTSEnable(true);
        session_.comm->DTREnable(true);
    } catch (const RuntimeError&) {
        // The port was lost: nothing will answer, and the scan moves on.
    }
}

/// Asks in the older text protocol.
bool DeviceScanner::probeTarn(std::string& version) {
    lines_.wait_comm_empty();
    if (!session_.send(std::string("\x02"
                                   "D00\r")) ||
        lines_.wait_comm(0.5) != kLine)
        return false;
    if (!session_.send(std::string("\x02"
                                   "F\r")) ||
        lines_.wait_comm(0.3) != kLine)
        return false;
    if (session_.receivedLine.front() != 'A') return false;
    version = session_.receivedLine.substr(1);
    return true;
}

}  // namespace corvane
