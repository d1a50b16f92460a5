#pragma once

#include <array>
#include <string>
#include <vector>

#include "face/PortPanel.h"
#include "protocol/DeviceLogin.h"
#include "protocol/LineReader.h"

namespace corvane {

/// Finds the one port, among all serial and all HID ports, on which a device answers, and the line settings at which it
/// does. Owns neither the ports nor the panel.
class DeviceScanner {
public:
    DeviceScanner(DeviceSession& session, clsIMScomm& serialPort, clsIMScomm& hidPort, PasswordPrompt& prompt,
                  PortPanel& panel);

    /// The version text of the device that answered, whose port is the current one and stays open. "Unknown Device" for
    /// a boot loader, which is taken only with bAcceptISP; empty when none was found. bInISP receives the result of the
    /// last prompt detection.
    std::string DeviceScan(bool& bInISP, bool bAcceptISP);

    /// The port at which the last scan saw a boot loader that it was not to take; empty when it saw none.
    const std::string& bootLoaderPort() const { return bootLoaderPort_; }

    /// Where something answered the last scan that was no reply, "something answers on COM1 at 19200, but not in a way
    /// that can be read: noise, or another kind of device"; empty when nothing did. UTF-8.
    std::string unreadable() const;

    /// How many ports the last scan had before it, and how many of those it tried did open.
    struct PortCount {
        int found = 0;
        int opened = 0;
    };
    const PortCount& portCount() const { return portCount_; }

    /// Opens a port once more at settings at which a device was found, without a word in the log.
    [[nodiscard]] bool openAgain(const std::string& name, const std::string& settings);

    /// How a device was found, and is asked again: at these settings in this protocol, "TarnPlus" or "Tarn"; at every
    /// setting that a scan tries and in both when no protocol is known.
    struct Way {
        std::string settings;
        std::string protocolName;
    };

    /// Asks the device on the current port for its version, without a word in the log; a TarnPlus device has so many ms
    /// to answer.
    [[nodiscard]] bool askVersion(const Way& way, std::int32_t timeout, std::string& version);

    /// Changes the line's settings, unless they are those already; false on a port that was lost.
    [[nodiscard]] bool setSettings(const std::string& settings);

    /// Leaves every port but this one out of the scans; empty for all of them.
    void onlyPort(const std::string& name) { onlyPort_ = name; }
    const std::string& onlyPort() const { return onlyPort_; }

    /// Tries these settings first, if they are among those that a scan tries; empty for the usual order.
    void firstSettings(const std::string& settings) { firstSettings_ = settings; }

    /// The names of all ports as a scan would find them, serial ports first.
    std::vector<std::string> portNames();

private:
    enum class Outcome { nothing, inBootLoader, bootLoaderAccepted, found };

    std::vector<std::string> scanOrder();
    std::vector<std::string> settingsOrder() const;
    bool selectPortObject(const std::string& name);
    bool openPort(const std::string& name);
    bool tryPort(int index, bool& bInISP, bool bAcceptISP, std::string& version);
    Outcome trySettings(const std::string& settings, bool& bInISP, bool bAcceptISP, std::string& version);
    void applySettings(const std::string& settings);
    bool probeTarn(std::string& version);
    void pause();

    DeviceSession& session_;
    std::array<clsIMScomm*, 2> ports_;
    DeviceLogin login_;
    LineReader lines_;
    PortPanel& panel_;
    std::string onlyPort_;
    std::string firstSettings_;
    std::string bootLoaderPort_;
    std::vector<std::string> unreadable_;  // "COM1 at 19200"
    PortCount portCount_;
    std::vector<std::string> order_;
    std::vector<std::string> settings_;     // in the order in which each port sees them
    std::vector<std::size_t> nextSetting_;  // by the order's index; a port that is returned to goes on there
};

}  // namespace corvane
